// -C, -U and -N from file to answer: all messages.
#include <gtest/gtest.h>

#include <sstream>

#include "oracle/parse_g.h"
#include "oracle/reference_unfolder.h"
#include "oracle/write_files.h"
#include "support/run_program.h"

namespace vorel::conflicts {
namespace {

TEST(ConflictCommand, TellsItsVerdictAndTheLeastCost) {
  const std::string cost = "total cost of all paths: ";
  const struct {
    const char *example, *mode;
    std::string verdict, least;
  } table[] = {
      {"vme_read", "-C", "CSC conflict has been detected", cost + "12"},
      {"dummy_fork", "-U", "USC conflict has been detected", cost + "5"},
      {"dummy_fork", "-N", "normalcy is violated", cost},
      {"vme_read_csc", "-C", "there are no CSC conflicts", ""},
      {"vme_read_csc", "-U", "there are no USC conflicts", ""},
      {"celement", "-N", "there are no normalcy violations", ""},
  };
  for (const auto& row : table) {
    for (const char* option : {"-m1", "-m2", "-l-", "-a", "-@", "-f"}) {
      const auto run = support::run_vorel(
          {row.mode, option, support::example(std::string(row.example) + ".unf.pnml")});
      EXPECT_EQ(run.exit_code, 0) << run.err;
      EXPECT_EQ(run.err, "");
      EXPECT_NE(run.out.find('\n' + row.verdict + '\n'), std::string::npos) << run.out;
      if (option == std::string("-f")) {
        EXPECT_NE(run.out.find(row.least), std::string::npos) << run.out;
      }
    }
  }
}

// Most candidates are refuted by a small part of the prefix; the conflict must not be.
TEST(ConflictCommand, FindsTheOneConflictAmongManyCircuits) {
  constexpr int most = 100;
  std::string signals, outputs, graph, marking;
  for (int i = 0; i < most; ++i) {
    const std::string n = std::to_string(i), a = "a" + n, b = "b" + n, c = "c" + n;
    signals += ' ' + a + ' ' + b;
    outputs += ' ' + c;
    graph += a + "+ " + c + "+\n" + b + "+ " + c + "+\n" + c + "+ " + a + "- " + b + "-\n" + a +
             "- " + c + "-\n" + b + "- " + c + "-\n" + c + "- " + a + "+ " + b + "+\n";
    marking += " <" + c + "-," + a + "+> <" + c + "-," + b + "+>";
  }
  const std::string in_conflict = "x+ x-\nx- y+\ny+ y-\ny- x+\n";
  const support::TemporaryFolder folder;
  for (const bool has_conflict : {false, true}) {
    folder.write("net.g", ".inputs" + signals + " x\n.outputs" + outputs + " y\n.graph\n" + graph +
                              (has_conflict ? in_conflict : "x+ y+\ny+ x-\nx- y-\ny- x+\n") +
                              ".marking {" + marking + " <y-,x+> }\n.end\n");
    const std::string prefix = folder.path("net.pnml");
    ASSERT_EQ(support::run_vorel_unfold({"-q", folder.path("net.g"), prefix}).exit_code, 0);
    const std::string rows[][3] = {
        {"-C", "there are no CSC conflicts", "CSC conflict has been detected"},
        {"-U", "there are no USC conflicts", "USC conflict has been detected"},
        {"-N", "there are no normalcy violations", "normalcy is violated"}};
    for (const auto& row : rows)
      for (const char* method : {"-m1", "-m2"})
        for (const char* solver : {"-$0", "-$1"}) {
          const auto run = support::run_vorel({row[0], method, solver, prefix});
          EXPECT_NE(run.out.find('\n' + row[has_conflict ? 2 : 1] + '\n'), std::string::npos)
              << row[0] << method << solver << run.out;
        }
  }
}

// The start tags of the document of an example, but for the steps.
std::string tags_of(const char* mode, const char* name) {
  const support::TemporaryFolder folder;
  const std::string file = folder.path("result.xml");
  EXPECT_EQ(
      support::run_vorel({mode, support::example(std::string(name) + ".unf.pnml"), file}).exit_code,
      0);
  std::string text;
  std::istringstream lines(support::read_text(file));
  for (std::string line; std::getline(lines >> std::ws, line);) {
    if (!line.starts_with("</") && !line.starts_with("<step ")) text += line;
  }
  return text;
}

TEST(ConflictDocument, TellsTheKindOfEachConflict) {
  const std::string csc = "CSC conflict has been detected", usc = "USC conflict has been detected";
  const std::string normalcy = "normalcy is violated", trace = "<trace>", triggers = "<triggers>";
  const struct {
    const char *mode, *name;
    std::string verdict, attributes, parts;
  } table[] = {
      {"-C", "vme_read", csc, "cost=\"12\" signal=\"d\" message=\"CSC conflict for signal d\"",
       trace + trace},
      {"-U", "vme_read", usc, "cost=\"12\"", trace + trace},
      {"-N", "vme_read", normalcy,
       "signal=\"lds\" cost=\"12\" reason=\"mixed_triggers\" normalcy_type_hypothesis=\"?\" "
       "message=\"Normalcy violation due to different triggers' signs for signal lds\"",
       trace + triggers},
      {"-N", "toggle", normalcy,
       "signal=\"a\" cost=\"8\" reason=\"contradictious_hypotheses\" "
       "normalcy_type_hypothesis=\"?\" "
       "message=\"Normalcy violation due to contradictious normalcy type hypotheses for signal a; "
       "the two traces show violations of p- and n-normalcy correspondingly\"",
       trace + triggers + trace + triggers},
      {"-N", "dummy_fork", normalcy,
       "signal=\"done\" cost=\"14\" reason=\"CSC_conflict\" normalcy_type_hypothesis=\"p\" "
       "message=\"Normalcy violation due to a CSC conflict for signal done\"",
       trace + trace},
      {"-N", "mutex2", normalcy,
       "signal=\"g1\" cost=\"6\" reason=\"other\" normalcy_type_hypothesis=\"n\" "
       "message=\"Normalcy violation for signal g1: n-normalcy is violated according to the first "
       "trace, p-normalcy is violated according to the other two traces\"",
       trace + triggers + trace + trace}};
  for (const auto& row : table) {
    EXPECT_EQ(tags_of(row.mode, row.name), "<result status=\"success\" message=\"" + row.verdict +
                                               "\"><solutions><solution " + row.attributes + ">" +
                                               row.parts);
  }
}

std::string file_of(const char* circuit, const support::TemporaryFolder& folder) {
  const auto prefix = oracle::unfold(oracle::parse_g(circuit).value());
  return folder.write("net.pnml", oracle::pnml_text(prefix.value()));
}

TEST(NormalcyCommand, TakesForTriggersWhatChangesTheNextValue) {
  const char* const circuits[] = {
      // The arc from z+ to z- says nothing: z+ comes before a- anyway.
      ".inputs a\n.outputs z\n.graph\na+ z+\nz+ a- z-\na- z-\nz- a+\n.marking { <z-,a+> }\n.end\n",
      // Before b- as after it, z is about to rise.
      ".inputs a b\n.outputs z\n.graph\ns a+\na+ p\np z+ b-\nb- z+/1\nz+ a-\na- z-\nz- s\n"
      "z+/1 a-/1\na-/1 z-/1\nz-/1 b+\nb+ s\n.marking { s }\n.end\n",
  };
  for (const char* circuit : circuits) {
    const support::TemporaryFolder folder;
    const auto run = support::run_vorel({"-N", file_of(circuit, folder)});
    EXPECT_NE(run.out.find("\nthere are no normalcy violations\n"), std::string::npos) << run.out;
  }
}

TEST(ConflictCommand, ToldToBeVerboseAddsTheCodeAndWhatIsEnabled) {
  const std::string code = "common code: dsr=1 ldtack=1 d=0 lds=1 dtack=0\n";
  const auto enabled = [](const std::string& first, const std::string& second) {
    return "enabled after the first trace: " + first +
           "\nenabled after the second trace: " + second + '\n';
  };
  const support::TemporaryFolder folder;
  const std::tuple<const char*, const char*, std::string> table[] = {
      {"-C", "-v1", code + enabled("lds-", "d+")},
      {"-U", "-v1", code + enabled("d+", "lds-")},
      {"-C", "-v0", ""},
  };
  for (const auto& [mode, option, err] : table) {
    const auto run = support::run_vorel({mode, option, support::example("vme_read.unf.pnml")});
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.err, err);
    EXPECT_EQ(run.out.find("enabled"), std::string::npos);
  }
  const char* const dead_end =
      ".outputs x\n.dummy d\n.graph\np d\nd x+\nx+ x-\nx- q\n.marking { p }\n.end\n";
  const auto run = support::run_vorel({"-C", "-v1", file_of(dead_end, folder)});
  EXPECT_NE(run.err.find("common code: x=0\n" + enabled("nothing", "x+")), std::string::npos)
      << run.err;
}

struct MessageRow {
  const char* circuit;
  std::vector<std::string> arguments;
  int exit_code;
  const char* message;
};

TEST(ConflictCommand, TellsWhatMakesItsAnswersDoubtful) {
  const char* const dead =
      ".inputs a\n.outputs x\n.graph\na+ a-\na- a+\n.marking { <a-,a+> }\n.end\n";
  const char* const cut_dummy =
      ".outputs x\n.dummy d\n.graph\nx+ x-\nx- d\nd x+\n.marking { <d,x+> }\n.end\n";
  const char* const choice =
      ".inputs a b\n.outputs x\n.graph\np a+ b+\na+ x+\nb+ x+/1\nx+ a-\nx+/1 b-\na- x-\nb- x-/1\n"
      "x- p\nx-/1 p\n.marking { p }\n.end\n";
  const char* const unreliable =
      "\nWarning: there are dummy cut-offs; the result will not be reliable\n";
  const MessageRow table[] = {
      {dead, {"-N"}, 2, "\nError: cannot make a hyphothesis about the normalcy type of x\n"},
      {cut_dummy, {"-C"}, 1, unreliable},
      {cut_dummy, {"-N", "-f"}, 1, unreliable},
      {choice,
       {"-U", "-l+"},
       1,
       "\nWarning: +l is valid only for (dynamically) conflict-free nets; the result may be "
       "incorrect\n"},
      {choice, {"-U", "-l-"}, 0, ""},
  };
  for (const MessageRow& row : table) {
    const support::TemporaryFolder folder;
    auto arguments = row.arguments;
    arguments.push_back(file_of(row.circuit, folder));
    const auto run = support::run_vorel(arguments);
    EXPECT_EQ(run.exit_code, row.exit_code) << row.circuit << run.out << run.err;
    const std::string message = row.message;
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
    EXPECT_EQ(run.err.find(message), message.empty() ? run.err.size() : run.err.rfind(message))
        << "told twice";
  }
}

}  // namespace
}  // namespace vorel::conflicts
