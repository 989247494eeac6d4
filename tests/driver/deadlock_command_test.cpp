// The command -D on inputs that are not what they seem.
#include <gtest/gtest.h>

#include <string>

#include "support/run_program.h"

namespace vorel::driver {
namespace {

std::size_t occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
    ++count;
  }
  return count;
}

// "spin" and "spill" wait for each other, and only what "spill" leaves could stop the loop of "go".
TEST(DeadlockCommand, DoesNotTakeEventsThatWaitForEachOtherForARun) {
  const support::TemporaryFolder folder;
  const std::string circle = folder.write("circle.mp",
                                          "6 4 5 4\n"
                                          "1 1 1\n2 1 0\n3 1 0\n4 1 0\n5 1 0\n1 2 0\n"
                                          "1 0 1 1 1 2\n2 0 1 2 2 1 3\n3 0 2 1 3 0 4\n4 1 1 1 0 5\n"
                                          "5\nready\na\nb\nc\nstopped\n"
                                          "spin\nspill\nstop\ngo\n");
  for (const char* search : {"-v3", "-a", "-f"}) {
    const support::ProgramRun at_once = support::run_vorel({"-D", search, circle});
    EXPECT_EQ(at_once.exit_code, 1) << "the format is deprecated";
    EXPECT_NE(at_once.out.find("\nthe system is deadlock-free\n"), std::string::npos);
    EXPECT_EQ(occurrences(at_once.err, "\nInstance size: cl/vars/lits="), 1u);
    EXPECT_EQ(occurrences(at_once.err, "CYCLE"), 0u);
    EXPECT_EQ(occurrences(at_once.err,
                          "\nExceeded the threshold on the number of chordless cycles: "
                          "|SCC|=2, threshold=0"),
              std::string(search) == "-v3" ? 1u : 0u);

    const support::ProgramRun in_steps = support::run_vorel({"-D", "-+", search, circle});
    EXPECT_NE(in_steps.out.find("\nthe system is deadlock-free\n"), std::string::npos);
    EXPECT_EQ(occurrences(in_steps.err, "\nInstance size: cl/vars/lits="), 2u);
    EXPECT_EQ(occurrences(in_steps.err,
                          "\nThe configuration contains a CYCLE, new constraints have "
                          "been added\nInstance size: "),
              1u);
  }
}

TEST(DeadlockCommand, WarnsOfPrefixesThatMayHaveLostTheirCutOffs) {
  const support::TemporaryFolder folder;
  const support::ProgramRun empty =
      support::run_vorel({"-D", folder.write("net.pnml",
                                             "<pnml><net type='branching_process:low_level_net'>"
                                             "<original_net><net type='low_level_net'><page/></net>"
                                             "</original_net><page/></net></pnml>")});
  EXPECT_EQ(empty.exit_code, 1);
  EXPECT_NE(empty.err.find("the prefix has no cut-off events; if they were discarded by the "
                           "unfolder then false deadlocks could have been introduced"),
            std::string::npos);
  // A net without transitions is dead from the start.
  EXPECT_NE(empty.out.find("\nSOLUTION 0:\n\npath cost: 0\n"), std::string::npos) << empty.out;
}

}  // namespace
}  // namespace vorel::driver
