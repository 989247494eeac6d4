// The run of the whole program: reading, order of the output, prompt, exit code.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/run_program.h"

namespace vorel::driver {
namespace {

using Arguments = std::vector<std::string>;

const std::string prompt = "\n Press `Enter'...";

struct Outcome {
  Arguments arguments;
  int exit_code;
  std::string out_start;
  std::string err;
};

void expect_outcome(const Outcome& row) {
  const support::ProgramRun run = support::run_vorel(row.arguments);
  SCOPED_TRACE(row.arguments.at(0) + " " + row.arguments.back());
  EXPECT_EQ(run.exit_code, row.exit_code) << run.err;
  EXPECT_TRUE(run.out.starts_with(row.out_start)) << run.out;
  EXPECT_EQ(run.err, row.err);
}

TEST(Application, ReportsFilesThatItCannotRead) {
  const support::TemporaryFolder folder;
  const auto unexpected = [](const std::string& extension) {
    return "\nError: unexpected file extension: \"" + extension + "\"\n";
  };
  const auto cannot_open = [](const std::string& name) {
    return "\nError: cannot open \"" + name + "\" for input\n";
  };
  const std::string stg = support::example("vme_read.unf.pnml");
  const std::string unfold = "(vorel-unfold makes a prefix of such a file)\n";
  const std::string blank = "(a property that begins with @ needs a blank before it)\n";
  for (const char* name : {"/a.mci", "/a.mp", "/a.pnml", "/a.pnml.gz"}) {
    std::filesystem::create_directory(folder.path() + name);
  }
  const Outcome table[] = {
      {{"-Fs", "-d", "x", "net.mp"}, 2, "\nfile: net.mp", unexpected("mp")},
      {{"-D", "net"}, 2, "\nfile: net", unexpected("")},
      {{"-D", ""}, 2, "\nfile: ", unexpected("")},
      {{"-D", "a.b/net"}, 2, "\nfile: a.b/net", unexpected("b/net")},
      {{"-D", "net.PNML"}, 2, "\nfile: net.PNML", unexpected("PNML")},
      {{"-D", "net.gz"}, 2, "\nfile: net.gz", unexpected("gz")},
      {{"-D", "net.g"}, 2, "\nfile: net.g", unexpected("g") + unfold},
      {{"-C", "net.ll_net.gz"}, 2, "\nfile: net.ll_net.gz", unexpected("gz") + unfold},
      {{"-F", "-d", "@$S\"a\"", stg}, 2, "\nfile: " + stg, cannot_open("$S\"a\"") + blank},
  };
  for (const Outcome& row : table) expect_outcome(row);
  for (const char* file : {"a.mci", "a.mp", "a.pnml", "a.pnml.gz", "none.mci", "none.pnml.gz"}) {
    const std::string name = folder.path(file);
    expect_outcome({{"-D", name}, 2, "\nfile: " + name, cannot_open(name)});
  }
}

TEST(Application, ReadsALegacyFileAsAPlainNetWhereThatIsAccepted) {
  const support::TemporaryFolder folder;
  std::string bytes = support::read_text(support::example("philosophers4.mci"));
  for (const auto& [from, to] : {std::pair{"take0", "O.abc"}, std::pair{"take1", "I.abc"}}) {
    ASSERT_NE(bytes.find(from), std::string::npos);
    bytes.replace(bytes.find(from), 5, to);
  }
  const std::string file = folder.write("labelled.mci", bytes);
  const support::ProgramRun plain = support::run_vorel({"-D", file});
  EXPECT_EQ(plain.exit_code, 1) << plain.err;  // the format is deprecated
  EXPECT_NE(plain.out.find("O.abc"), std::string::npos) << plain.out << plain.err;
  const support::ProgramRun stg = support::run_vorel({"-C", file});
  EXPECT_EQ(stg.exit_code, 2);
  EXPECT_NE(stg.err.find("removing prefix from a transition name causes a collision"),
            std::string::npos)
      << stg.err;
}

TEST(Application, FailsOnlyAfterReadingAndCheckingItsInput) {
  const std::string stg = support::example("vme_read.unf.pnml");
  const std::string start = "\nfile: " + stg + "\n |B|=15 |E|=12 |C|=1 |BE|=14 |EB|=13";
  expect_outcome({{"-T", stg},
                  2,
                  start + "\nFailed to decompose\n",
                  "\nError: CSC conflict for output signal d: cannot derive equation\n"
                  "\nError: failed to decompose\n"});
  const std::string bad = "\nError: bad coefficient option: ";
  expect_outcome({{"-R", "-ccsc=1-2", "-clock=5/0", stg},
                  2,
                  start,
                  bad + "coefficient must be non-negative when parsing 1-2\n" + bad +
                      "division by 0 when parsing 5/0<<<ERROR>>>\n"});
}

TEST(Application, ReplacesNoInputByItsAnswer) {
  namespace fs = std::filesystem;
  const support::TemporaryFolder folder;
  const std::string net = support::read_text(support::example("celement.unf.pnml"));
  folder.write("in.pnml", net);
  folder.write("p", "true");
  fs::create_symlink("in.pnml", folder.path("symbolic"));
  fs::create_hard_link(folder.path("in.pnml"), folder.path("hard.xml"));
  fs::create_symlink("p", folder.path("property.v"));
  const std::string is_input = "is the input", is_given = "is given with -d";
  const std::string is_net = "is a net or process by its name (give the output another one)";
  std::vector<std::pair<std::string, std::string>> table = {
      {"in.pnml", is_input},  {"./in.pnml", is_input}, {"symbolic", is_input},
      {"hard.xml", is_input}, {"p", is_given},         {"property.v", is_given}};
  for (const char* name : {"x.g", "x.ll_net", "x.pnml", "x.pnml.gz", "x.mci", "x.mp", "x.g.gz"}) {
    folder.write(name, "kept");
    table.emplace_back(name, is_net);
  }
  for (const auto& [name, reason] : table) {
    const support::ProgramRun run =
        support::run_vorel({"-F", "-d", "@p", "in.pnml", name}, {.directory = folder.path()});
    EXPECT_EQ(run.exit_code, 2) << name;
    EXPECT_EQ(run.out, "\nfile: in.pnml") << name;
    EXPECT_EQ(run.err, "\nError: refusing to overwrite " + name + ", which " + reason + "\n");
    EXPECT_EQ(support::read_text(folder.path("in.pnml")), net) << name;
    EXPECT_EQ(support::read_text(folder.path("p")), "true") << name;
    EXPECT_EQ(support::read_text(folder.path("x.pnml.gz")), "kept") << name;
  }
  folder.write("old.reach", "gone");
  for (const char* name : {"new.mci", "old.reach", "x"}) {
    EXPECT_EQ(support::run_vorel({"-D", folder.path("in.pnml"), folder.path(name)}).exit_code, 0);
    EXPECT_EQ(support::read_text(folder.path(name)), "NO\n");
  }
}

TEST(Application, WaitsForEnterAsTheOptionSays) {
  const support::TemporaryFolder folder;
  const std::string clean = support::example("celement.unf.pnml");
  const std::string warning = support::example("philosophers4.mci");
  const std::string error = folder.path("missing.pnml");
  const struct {
    const char* option;
    bool after_success, after_warning, after_error;
  } table[] = {
      {"-w0", false, false, false}, {"-w1", false, false, true}, {"-w2", false, true, true},
      {"-w3", true, true, true},    {"-w", true, true, true},
  };
  const auto prompts = [](const char* option, const std::string& file) {
    return support::run_vorel({"-D", option, file}, {.input = "line\nline\n"})
        .out.ends_with(prompt);
  };
  for (const auto& row : table) {
    EXPECT_EQ(prompts(row.option, clean), row.after_success) << row.option;
    EXPECT_EQ(prompts(row.option, warning), row.after_warning) << row.option;
    EXPECT_EQ(prompts(row.option, error), row.after_error) << row.option;
  }
  EXPECT_EQ(support::run_vorel({"-D", "-w3", error}, {.input = ""}).exit_code, 2)
      << "no standard input";
}

TEST(Application, FailsWhenItsOutputIsLost) {
  const std::string file = support::example("celement.unf.pnml");
  for (const Arguments& arguments : {Arguments{}, Arguments{"-h"}, Arguments{"-D", file}}) {
    const support::ProgramRun run = support::run_vorel(arguments, {.output_path = "/dev/full"});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_TRUE(run.err.starts_with("\nError: cannot write ")) << run.err;
    EXPECT_EQ(run.err.find("Error", 10), std::string::npos) << run.err;
  }
}

TEST(Application, AClosedStandardOutputIsAnErrorAndNeverMixesWithAFile) {
  const support::TemporaryFolder folder;
  const std::string command = "\"$0\" -D \"$1\" \"$2\" >&-";
  EXPECT_EQ(support::run_program({"/bin/sh", "-c", command, VOREL_BINARY,
                                  support::example("celement.unf.pnml"), folder.path("answer")})
                .exit_code,
            2);
  EXPECT_EQ(support::read_text(folder.path("answer")), "NO\n");
}

// A file that the caller redirected the output to: neither may overwrite the other.
TEST(Application, AnAnswerSentToTheStandardOutputByNameStandsBetweenStatisticsAndTimes) {
  const std::string name = support::example("philosophers4.unf.pnml");
  const support::ProgramRun run = support::run_vorel({"-D", name, "/dev/stdout"});
  EXPECT_EQ(run.exit_code, 0) << "an answer never shows there";
  EXPECT_EQ(run.err, "");
  const std::string start = "\nfile: " + name + "\n |B|=28 |E|=12 |C|=4 |BE|=20 |EB|=20\n";
  EXPECT_TRUE(run.out.starts_with(start)) << run.out;
  const std::size_t times = run.out.find("\n SAT/Total time: ", run.out.find("YES\n"));
  ASSERT_NE(times, std::string::npos) << run.out;
  EXPECT_EQ(run.out[run.out.size() - 3], '.') << "two decimals end the output";
}

#ifndef VOREL_SANITIZED
TEST(Application, MemoryOverflowIsReportedOnceWithItsOwnExitCode) {
  const support::TemporaryFolder folder;
  const std::string file = folder.path("large.pnml");
  std::ofstream(file) << "<pnml>" << std::string(std::size_t{64} << 20, ' ') << "</pnml>";
  const support::ProgramRun run =
      support::run_vorel({"-D", "-w3", file}, {.address_space = std::size_t{48} << 20});
  EXPECT_EQ(run.exit_code, 5);
  EXPECT_EQ(run.err, "\nError: memory overflow\n");
  EXPECT_EQ(run.out, "\nfile: " + file);
}
#endif

}  // namespace
}  // namespace vorel::driver
