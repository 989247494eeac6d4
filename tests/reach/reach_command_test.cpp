// The command -F on inputs that say little of their nets.
#include <gtest/gtest.h>

#include <string>

#include "oracle/write_files.h"
#include "support/process_builder.h"
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

// Two events are behind cut-offs, one of which is a dummy: no state enables them.
TEST(ReachCommand, LooksForNothingBehindACutOff) {
  const auto process =
      support::process_from<net::StgPrefix>("x+!: p -> q; y+: q -> p2; d.k!: r -> s; z+: s -> r2");
  const support::TemporaryFolder folder;
  const std::string prefix = folder.write("net.pnml", oracle::pnml_text(*process));
  const struct {
    const char* property;
    bool is_reachable;
  } table[] = {{"@T\"x+\"", true}, {"@T\"y+\"", false}, {"@T\"z+\"", false},
               {"@S\"z\"", false}, {"@E 2", false},     {"@E 1 & ~@E 4", true}};
  for (const auto& [property, is_reachable] : table) {
    const support::ProgramRun run =
        support::run_vorel({"-Fs", "-f", "-d", std::string(" ") + property, prefix});
    const char* const answer = is_reachable ? "SOLUTION 0:\n" : "no reachable state satisfies";
    EXPECT_LT(run.exit_code, 2) << property << run.err;
    EXPECT_NE(run.out.find(answer), std::string::npos) << property << run.out << run.err;
  }
}

}  // namespace
}  // namespace vorel::reach
