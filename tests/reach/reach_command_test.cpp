// The command -F on inputs that say little of their nets.
#include <gtest/gtest.h>

#include <string>

#include "support/run_program.h"

namespace vorel::reach {
namespace {

// A file of this format has only the arcs of events: "d", which has none, seems to wait for
// nothing.
TEST(ReachCommand, HoldsTransitionsWithoutEventsForDead) {
  const support::TemporaryFolder folder;
  const std::string merged =
      folder.write("dead.mp", "2 1 2 2\n1 1 1\n2 1 0\n1 0 1 1 0 1\n1\np\nq\nt\nd\n");
  EXPECT_NE(support::run_vorel({"-D", merged}).out.find("\nthe system has a deadlock\n"),
            std::string::npos);
  const struct {
    std::string property, answer;
  } table[] = {{"@T\"d\"", "\nno reachable state satisfies the predicate\n"},
               {"@T\"t\" & @T\"d\"", "\nno reachable state satisfies the predicate\n"},
               {"$P\"q\" & ~@T\"d\"", "SOLUTION 0:\nt\n"},
               {"forall t in TRANSITIONS { ~@t }", "SOLUTION 0:\nt\n"}};
  for (const auto& [property, answer] : table) {
    const support::ProgramRun run = support::run_vorel({"-F", "-f", "-d", ' ' + property, merged});
    EXPECT_EQ(run.exit_code, 1) << "the format is deprecated";
    EXPECT_NE(run.out.find(answer), std::string::npos) << property << run.out << run.err;
  }
}

}  // namespace
}  // namespace vorel::reach
