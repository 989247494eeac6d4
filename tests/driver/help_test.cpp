#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/run_program.h"

namespace vorel {
namespace {

// Each text after the end of the one before it.
void expect_in_order(const std::string& text, const std::vector<std::string>& parts) {
  std::size_t position = 0;
  for (const std::string& part : parts) {
    const std::size_t found = text.find(part, position);
    ASSERT_NE(found, std::string::npos) << "missing or too early: " << part;
    position = found + part.size();
  }
}

const std::vector<std::string> common_parts = {
    "\nVOREL model checking/synthesis system, version 6.11alpha Compiled Oct 27 2015.",
    "zChaff",
    "2003.11.04",
    "MiniSat",
    "2.2.0",
    "SIS",
    "1.2",
    "BREL",
    "\n\nUsage:\n\tvorel [-h]\nor\n\tvorel mode [options] inputfilename [outputfilename]",
    "\n\nModes:\n  Reachability-like properties checking modes:",
    "-D - Deadlock checking.",
    "-F - Find a reachable marking satisfying a given REACH predicate.",
    "-Fs - Find a reachable STG state satisfying a given REACH predicate.",
    "\n  Encoding conflicts detection and resolution modes:",
    "-C - CSC conflict detection.",
    "-N - Normalcy property checking mode.",
    "-R - Resolve encoding conflicts.",
    "-U - USC conflict detection.",
    "\n  Synthesis modes:",
    "-E - Derive complex-gate implementation.",
    "-G - Derive gC-elements implementation.",
    "-S - Derive standard-C implementation.",
    "-T - Logic decomposition and technology mapping (experimental).",
    "\n\nOptions:",
    "\n  -! - Disable branching on auxiliary variables.",
    "\n  -$N - Switch to SAT solver N (0-1).",
    "\n  -@ - Output configurations rather than traces.",
    "\n  -a[N] - Compute all solutions (might be slow).",
    "\n  -b - Generate backward conflict constraints.",
    "\n  -c[s|l|COEFF=EXPR] - Specifies the coefficients for the cost function.",
    "\n  -d string - Specifies additional mode-dependent data.",
    "\n  -f - Looking for a solution minimising the cost function (might be slow).",
    "\n  -g[[!][N]] - Specifies gates/latches used for logic decomposition.",
    "\n  -l[+|-] - Specifies whether to generate inclusion constraints.",
    "\n  -mN - Using method N (1-9).",
    "\n  -pN - Controls the use of parallel (concurrent) inserions.",
    "\n  -r - Allows to use concurrency reduction for encoding conflict resolution.",
    "\n  -s - Store the CNF formula for an external SAT solver.",
    "\n  -t - Perform logic decomposition down to the gate/latch level.",
    "\n  -vN - The verbosity level (0<=N<=9, the default is 0).",
    "\n  -w[N] - Wait for user input before exiting (prevents the window from closing).",
    "\n  -x - Saves the results in vorel.xml.",
};

TEST(Help, WithoutArgumentsIsBrief) {
  const ProgramRun run = run_vorel({});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  expect_in_order(run.out, common_parts);
  EXPECT_TRUE(
      run.out.ends_with("\n  -x - Saves the results in vorel.xml."
                        "\nType vorel -h for extended help.\n"));
  EXPECT_EQ(run.out.find("paragraph"), std::string::npos);
  EXPECT_EQ(run.out.find("-+"), std::string::npos) << "an option that is not listed";
}

TEST(Help, InFullExplainsEveryOptionWithTheCurrentDefaults) {
  const ProgramRun run = run_vorel({"-h", "x", "y"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  expect_in_order(run.out, common_parts);
  const std::string all = "\n  This option is available in all modes.";
  expect_in_order(run.out,
                  {"\n\nUsage:",
                   "\n\nIf outputfilename is omitted then stdout is used.",
                   "\n\nIf -h is specified then full help is printed. If no\n"
                   "command-line parameters are given then brief help is printed.",
                   "-Fs - Find",
                   "without maximal dummy events",
                   "'@'",
                   "sequence of dummies",
                   "-T - Logic",
                   "At most one mode",
                   "*.mci",
                   "ZEPH",
                   "consistent",
                   "CSC property",
                   "normalcy",
                   "\n\nOptions:",
                   all,
                   "\n\n  -$N - ",
                   "N=0 selects zChaff, N=1 selects MiniSat.",
                   "The default is chosen heuristically, depending on the mode.",
                   "\n\n  -@ - ",
                   "silently ignored in any other mode",
                   "The numbering of events starts from 1.",
                   "\n\n  -a[N] - ",
                   "only approximate",
                   "combined with -f",
                   "\n\n  -b - ",
                   "redundant",
                   "\n\n  -c[s|l|COEFF=EXPR] - ",
                   "U-n->t",
                   "+, -, *, /, %%,",
                   "#i",
                   "#t",
                   "\n      csc=#s*8, usc=#s*4, del=#s*2, trig=#s*1, seq=#s*4, conc=#s*8, lock=50.",
                   "\n\n  -d string - ",
                   "GENLIB",
                   "\n\n  -f - ",
                   "-N and -R",
                   "\n\n  -g[[!][N]] - ",
                   "-g!2",
                   "\n\n  -l[+|-] - ",
                   "conflict-free",
                   "\n\n  -mN - ",
                   "-m2 (default)",
                   "-m1 (default)",
                   "\n\n  -pN - ",
                   "u-||n->t",
                   "****t",
                   "The default is -p0.\n",
                   "\n  -r - ",
                   "weakly fair",
                   "\n\n  -s - Store the CNF formula for an external SAT solver." + all,
                   "\n\n  -t - ",
                   "\n\n  -vN - The verbosity level (0<=N<=9, the default is 0)." + all,
                   "\n\n  -w[N] - ",
                   "The default is -w0, and -w is equivalent to -w3.\n"});
  EXPECT_TRUE(run.out.ends_with("\n  -x - Saves the results in vorel.xml." + all + "\n"));
  EXPECT_EQ(run.out.find('{'), std::string::npos) << "a name that got no value";
}

}  // namespace
}  // namespace vorel
