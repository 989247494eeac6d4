// The commands -E, -G and -S from file to answer: every byte that they write.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/run_program.h"

namespace vorel::driver {
namespace {

constexpr const char* failure = "\nFailed to synthesise the specification\n";
constexpr const char* conflict =
    "\nError: CSC conflict for output signal d: cannot derive equation\n";

// Two signals would do for SET of z: w, which RESET cannot use, and x.
constexpr const char* two_choices =
    ".inputs i x w\n.outputs z\n.graph\ni+ x+\nx+ w+\nw+ i-\ni- z+\nz+ i+/2\ni+/2 x-\nx- z-\n"
    "z- w-\nw- i-/2\ni-/2 i+\n.marking { <i-/2,i+> }\n.end\n";
constexpr const char* without_inputs =
    ".outputs a a_SET\n.graph\na+ a_SET+\na_SET+ a-\na- a_SET-\na_SET- a+\n"
    ".marking { <a_SET-,a+> }\n.end\n";
constexpr const char* dead_output =
    ".inputs i\n.outputs o z\n.graph\ni+ o+\no+ i-\ni- o-\no- i+\n.marking { <o-,i+> }\n.end\n";
constexpr const char* without_outputs =
    ".inputs i\n.graph\ni+ i-\ni- i+\n.marking { <i-,i+> }\n.end\n";

std::string unfolded(const support::TemporaryFolder& folder, const std::string& g_text) {
  const std::string file = folder.path("stg.unf.pnml");
  EXPECT_LT(support::run_vorel_unfold({folder.write("stg.g", g_text), file}).exit_code, 2);
  return file;
}

// What comes between the statistics of the prefix and those of the formula, and after a failure to
// the end.
std::string answer(const support::ProgramRun& run) {
  const std::size_t start = run.out.find(" |EB|=");
  if (start == std::string::npos) return "no statistics: " + run.out;
  const std::size_t first = run.out.find('\n', start);
  const std::size_t formula = run.out.find("\nOriginal Num Var/Cl/Lit", start);
  const std::size_t times = run.out.find("\n SAT/Total time: ", start);
  EXPECT_EQ(formula == std::string::npos, times == std::string::npos);
  EXPECT_EQ(formula == std::string::npos, run.exit_code == 2);
  return first == std::string::npos ? "" : run.out.substr(first, formula - first);
}

TEST(SynthesisCommand, TellsTriggersContextAndEquationOfEachAlternative) {
  const support::TemporaryFolder folder;
  const support::ProgramRun run = support::run_vorel({"-G", "-@", unfolded(folder, two_choices)});
  EXPECT_EQ(run.exit_code, 0);
  const std::string set =
      "Signal z SET (cost 2)\nTriggers (approximation): i\nContext: i w\nEquation (2 lits): i' w\n"
      "Context: i x\nEquation (2 lits): i' x";
  const std::string reset =
      "Signal z RESET (cost 1)\nTriggers (approximation): x\nContext: x\nEquation (1 lits): x'";
  EXPECT_EQ(answer(run), "\nSOLUTION 0:\n" + set + "\nSOLUTION 1:\n" + reset +
                             "\nEquations derived (literals=3)\n");

  const std::string text = folder.path("out.txt");
  EXPECT_EQ(answer(support::run_vorel({"-G", folder.path("stg.unf.pnml"), text})), "");
  EXPECT_EQ(support::read_text(text), "\nYES\n" + set + "\nYES\n" + reset);
}

TEST(SynthesisCommand, ToldToBeVerboseNamesSignalsThatBreakWhatEquationsAssume) {
  const support::TemporaryFolder folder;
  const std::string dead = unfolded(folder, dead_output);
  const std::string arbiter = support::example("mutex2.unf.pnml");
  const std::string hazards =
      "\noutput g2 can disable output g1, a hazard\noutput g1 can disable output g2, a hazard";
  for (const std::string mode : {"-E", "-G", "-S"}) {
    EXPECT_EQ(support::run_vorel({mode, "-v1", dead}).err,
              "\noutput z never changes, and becomes a constant");
    const support::ProgramRun run = support::run_vorel({mode, "-v1", arbiter});
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.err, hazards);
    EXPECT_EQ(support::run_vorel({mode, arbiter}).err, "");
  }
}

TEST(SynthesisCommand, WritesADocument) {
  const support::TemporaryFolder folder;
  const std::string file = folder.path("out.xml");
  support::run_vorel({"-E", support::example("mutex2.unf.pnml"), file});
  const std::string document = support::read_text(file);
  EXPECT_TRUE(document.starts_with(
      "<result status=\"success\" message=\"Equations derived (literals=4)\">\n\t<solutions>\n"
      "\t\t<solution cost=\"2\" message=\"alternative implementations of g1\">\n"
      "\t\t\t<signal>g1</signal>\n"
      "\t\t\t<triggers>\n\t\t\t\t<signal>r1</signal>\n\t\t\t</triggers>\n"
      "\t\t\t<implementation cost=\"2\">\n"
      "\t\t\t\t<context>\n\t\t\t\t\t<signal>r1</signal>\n\t\t\t\t\t<signal>g2</signal>\n"
      "\t\t\t\t</context>\n"
      "\t\t\t\t<text>r1 g2&apos;</text>\n"
      "\t\t\t\t<equation>\n\t\t\t\t\t<text>r1 g2&apos;</text>\n\t\t\t\t</equation>\n"
      "\t\t\t</implementation>\n\t\t</solution>\n"))
      << document;
}

struct VerilogRow {
  const char* mode;
  std::string stg;
  const char* status;
  std::string text;
};

const std::string c_element_end = "); // C-element with one inverted input\n";
const VerilogRow verilog_table[] = {
    {"-E", without_inputs, "Equations derived (literals=2)",
     "module VOREL_unmapped_implementation(a, a_SET);\n    output a, a_SET;\n\n"
     "    // complex-gate implementation, each 'assign' statement is assumed to be ATOMIC;\n"
     "    // total cost=2\n\n"
     "    assign a = ~a_SET; // cost=1\n\n"
     "    assign a_SET = a; // cost=1\n\n"
     "    // initial values of the signals\n    // !a !a_SET\nendmodule\n"},
    {"-G", two_choices, "Equations derived (literals=3)",
     "module VOREL_unmapped_implementation(z, i, w, x);\n    output z;\n    input i, w, x;\n\n"
     "    // gC implementation, each 'assign' statement is assumed to be ATOMIC;\n"
     "    // total cost=3\n\n"
     "    // SET=~i & w, RESET=~x, cost=3\n    assign z = ~i & w | z & x;\n"
     "    // SET=~i & x, RESET=~x, cost=3\n    // assign z = ~i & x | z & x;\n\n"
     "    // initial values of the signals\n    // !i !w !x !z\nendmodule\n"},
    {"-S", without_inputs, "Equations derived (literals=4)",
     "module VOREL_unmapped_implementation(a, a_SET);\n    output a, a_SET;\n\n"
     "    // standard-C implementation, each 'assign' statement is assumed to be ATOMIC;\n"
     "    // total cost=4\n\n\n"
     "    // Signal a cost=2\n"
     "    assign a_SET1 = ~a_SET; // cost=1\n    assign a_RESET = a_SET; // cost=1\n"
     "    assign a = a_SET1 & ~a_RESET | a & (a_SET1 | ~a_RESET" +
         c_element_end +
         "\n\n    // Signal a_SET cost=2\n"
         "    assign a_SET_SET = a; // cost=1\n    assign a_SET_RESET = ~a; // cost=1\n"
         "    assign a_SET = a_SET_SET & ~a_SET_RESET | a_SET & (a_SET_SET | ~a_SET_RESET" +
         c_element_end +
         "\n    // initial values of the signals\n"
         "    // !a !a_SET a_SET1 !a_RESET !a_SET_SET a_SET_RESET\nendmodule\n"},
    {"-G", dead_output, "Equations derived (literals=2)",
     "module VOREL_unmapped_implementation(o, z, i);\n    output o, z;\n    input i;\n\n"
     "    // gC implementation, each 'assign' statement is assumed to be ATOMIC;\n"
     "    // total cost=2\n\n"
     "    // SET=i, RESET=~i, cost=2\n    assign o = i | o & i;\n\n"
     "    // SET=1b`0, RESET=1b`0, cost=0\n    assign z = 1b`0 | z & 1b`1;\n\n"
     "    // initial values of the signals\n    // !i !o !z\nendmodule\n"},
    {"-E", without_outputs, "Cannot derive equation", failure},
};

TEST(SynthesisCommand, WritesAVerilogModule) {
  for (const VerilogRow& row : verilog_table) {
    SCOPED_TRACE(row.mode + row.stg);
    const support::TemporaryFolder folder;
    const std::string prefix = unfolded(folder, row.stg);
    const support::ProgramRun run = support::run_vorel({row.mode, prefix, folder.path(".v")});
    EXPECT_LT(run.exit_code, 2) << run.err;
    EXPECT_EQ(answer(run), std::string("\n") + row.status + '\n');
    EXPECT_EQ(support::read_text(folder.path(".v")), row.text);
  }
}

TEST(SynthesisCommand, WritesVerilogToTheErrorStreamWhereTheFileCannotBeOpened) {
  const support::TemporaryFolder folder;
  const std::string file = folder.path("no/such.v");
  const support::ProgramRun run =
      support::run_vorel({"-E", unfolded(folder, without_inputs), file});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.err,
            "\nWarning: cannot open \"" + file + "\" for output\n" + verilog_table[0].text);
}

TEST(SynthesisCommand, ASignalThatCannotBeNamedInVerilogIsRefusedThere) {
  const std::string rest =
      " cannot stand in Verilog, which takes names of printable ASCII characters without blanks\n";
  const std::pair<const char*, std::string> rows[] = {
      {"", "\nError: a signal has no name, and so cannot stand in Verilog\n"},
      {"c sc", "\nError: the signal 'c sc'" + rest},
      {"caf\u00e9", "\nError: the signal 'caf\u00e9'" + rest},
  };
  const support::TemporaryFolder folder;
  for (const auto& [new_name, error] : rows) {
    std::string text = support::read_text(support::example("vme_read_csc.unf.pnml"));
    const std::string name = "<text>csc</text>";
    ASSERT_NE(text.find(name), std::string::npos);
    text.replace(text.find(name), name.size(), std::string("<text>") + new_name + "</text>");
    folder.write("x.pnml", text);
    for (const std::string mode : {"-E", "-G", "-S"}) {
      const support::ProgramRun run =
          support::run_vorel({mode, folder.path("x.pnml"), folder.path("o.v")});
      EXPECT_EQ(run.exit_code, 2);
      EXPECT_EQ(run.err, error);
      EXPECT_FALSE(std::filesystem::exists(folder.path("o.v")));
    }
  }
}

TEST(SynthesisCommand, AConflictLeavesAMessageAndNoEquation) {
  const support::TemporaryFolder folder;
  const std::string stg = support::example("vme_read.unf.pnml");
  const std::string status = "\nCannot derive equation\n";
  const struct {
    const char *mode, *file;
    std::string out, text;
  } table[] = {
      {"-E", "", status, ""},      {"-G", "", status, ""},      {"-S", "o.v", status, failure},
      {"-E", "o.xml", status, ""}, {"-G", "o.txt", "", "NO\n"}, {"-E", "cerr", status, ""},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(std::string(row.mode) + ' ' + row.file);
    const support::ProgramRun run =
        support::run_vorel({row.mode, stg, row.file}, {.directory = folder.path()});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.err, conflict);
    EXPECT_EQ(answer(run), row.out);
    std::string written;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      written = support::read_text(entry.path());
      std::filesystem::remove(entry.path());
    }
    EXPECT_EQ(written, row.text);
  }
}

}  // namespace
}  // namespace vorel::driver
