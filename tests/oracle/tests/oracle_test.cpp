// The parts of the oracle on situations made by hand, and its checks on prefixes made wrong.
#include <gtest/gtest.h>

#include "oracle/net_text.h"
#include "oracle/prefix_checks.h"
#include "oracle/reference_unfolder.h"

namespace vorel::oracle {
namespace {

TEST(Replay, FollowsEnabledTransitionsOnly) {
  const net::Net net = net_from("marked p; a: p -> q; b: q -> r");
  const auto replays = [&](const std::vector<std::string>& names) { return replay(net, names); };
  ASSERT_TRUE(replays({"a", "b"}));
  EXPECT_TRUE(is_dead(net, *replays({"a", "b"})));
  EXPECT_FALSE(is_dead(net, *replays({"a"})));
  EXPECT_FALSE(replays({"b"}));
  EXPECT_FALSE(replays({"a", "a"}));
  EXPECT_FALSE(replays({"nothing"}));
}

TEST(Completeness, IsMissedWhenAnEventIsWronglyACutOff) {
  const net::Net net = net_from("marked p; a: p -> q; b: q -> r; c: r -> p");
  auto prefix = unfold(net);
  const StateGraph<net::Net> graph = explore(net);
  ASSERT_EQ(completeness_fault(*prefix, graph), "");
  prefix->events[1]->mark_cut_off();
  EXPECT_NE(completeness_fault(*prefix, graph), "");
  EXPECT_EQ(branching_fault(*prefix), "event 2 lies after a cut-off");
}

TEST(Completeness, IsMissedWhenAnEventIsNotThere) {
  const net::Net net = net_from("marked p q; a: p -> r; b: q -> s");
  auto prefix = unfold(net);
  prefix->events.back()->preset.front()->postset.clear();
  prefix->conditions.pop_back();
  prefix->events.pop_back();
  EXPECT_EQ(completeness_fault(*prefix, explore(net)), "no event for b where it is enabled");
}

TEST(BranchingFault, SeesAWrongCorrespondent) {
  auto prefix = unfold(net_from("marked p; a: p -> q; b: q -> r; c: r -> q"));
  ASSERT_EQ(branching_fault(*prefix), "");
  net::EventOf<net::Net>* wrong = prefix->events[1].get();
  prefix->events[2]->cut_off.set_correspondents({&wrong, 1});
  EXPECT_EQ(branching_fault(*prefix), "event 2 does not reach the state of its correspondent");
}

TEST(BranchingFault, SeesConflictInAHistory) {
  auto prefix = unfold(net_from("marked p; a: p -> q; b: p -> r; c: q -> s; d: r -> t"));
  ASSERT_EQ(prefix->events.size(), 4u);
  net::add_link(*prefix->events[1]->postset.front(), *prefix->events[2]);
  net::add_arc(*prefix->events[1]->postset.front()->place, *prefix->events[2]->transition);
  EXPECT_EQ(branching_fault(*prefix), "event 2 has a history with a conflict");
}

}  // namespace
}  // namespace vorel::oracle
