// The parts of the oracle on situations made by hand, and its checks on prefixes made wrong.
#include <gtest/gtest.h>

#include "oracle/coding.h"
#include "oracle/net_text.h"
#include "oracle/parse_g.h"
#include "oracle/prefix_checks.h"
#include "oracle/reference_merger.h"
#include "oracle/reference_unfolder.h"
#include "oracle/write_files.h"

namespace vorel::oracle {
namespace {

TEST(StateGraph, TellsAnUnsafeNet) {
  const net::Net net = net_from("marked p q; a: p -> r; b: q -> r; c: r -> s");
  EXPECT_EQ(explore(net).outcome, Exploration::unsafe);
}

TEST(StateGraph, TellsANetWithTooManyStates) {
  EXPECT_EQ(explore(philosophers(4), 33).outcome, Exploration::too_large);
  EXPECT_EQ(explore(philosophers(4), 34).outcome, Exploration::complete);
}

TEST(StateGraph, FindsTheNearestDeadlockByCountingFirings) {
  const net::Net net = net_from("marked p; a: p -> q; b: q -> r; c: r -> x; d: q -> y; e: x -> p");
  EXPECT_EQ(explore(net).shortest_deadlock(), 2u);
}

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

std::optional<Values> values_of(const std::string& graph_and_marking) {
  const auto stg = parse_g(".inputs x\n.outputs y\n.graph\n" + graph_and_marking + "\n.end\n");
  EXPECT_TRUE(stg);
  return find_initial_values(*stg, explore(*stg));
}

TEST(Consistency, IsFoundFromSigns) {
  EXPECT_EQ(values_of("x- y+\ny+ x+\nx+ y-\ny- x-\n.marking { <y-,x-> }"), (Values{1, 0}));
  EXPECT_EQ(values_of("x+ x-\nx- x+\n.marking { <x-,x+> }"), (Values{0, 0}));
  EXPECT_EQ(values_of("x+ y+\ny+ x+\n.marking { <y+,x+> }"), std::nullopt);
  EXPECT_EQ(values_of("p x+ x-\nx+ q\nx- q\n.marking { p }"), std::nullopt);
  // A toggle lets the sign after it decide; alone it decides nothing.
  EXPECT_EQ(values_of("x~ x-\nx- x~\n.marking { <x-,x~> }"), (Values{0, 0}));
  EXPECT_EQ(values_of("x~ x+\nx+ x~\n.marking { <x+,x~> }"), (Values{1, 0}));
  EXPECT_EQ(values_of("y~ p\np y~\n.marking { p }"), (Values{0, 0}));
}

TEST(StateOfAnStg, IsTheMarkingAndTheCode) {
  const auto stg = parse_g(".outputs y\n.graph\ny~ p\np y~\n.marking { p }\n.end\n");
  EXPECT_EQ(explore(*stg).states.size(), 2u);
  const auto prefix = unfold(*stg);
  ASSERT_EQ(prefix->events.size(), 2u);
  EXPECT_FALSE(prefix->events[0]->is_cut_off());
  EXPECT_TRUE(prefix->events[1]->cut_off.is_initial_marking());
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
  net::EventOf<net::Net>& last = *prefix->events.back();
  last.preset.front()->postset.clear();
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

TEST(Merger, JoinsOccurrencesOfTheSamePlaceAndDepthOnly) {
  // Both branches reach q at depth 1; the loop reaches it at depth 2, by a cut-off.
  const net::NetMergedProcess merged =
      merge(*unfold(net_from("marked p; a: p -> q; b: p -> q; c: q -> r; d: r -> q")));
  std::string depths;
  for (const auto& condition : merged.conditions) {
    depths += condition->place->name + std::to_string(condition->occurrence_depth) + " ";
  }
  EXPECT_EQ(depths, "p1 q1 r1 q2 ");
  EXPECT_EQ(merged.conditions[1]->preset.size(), 2u);
}

TEST(Writers, EscapeNamesInPnml) {
  auto prefix = unfold(net_from("marked p; a: p -> q"));
  prefix->places[0]->name = "<a&\"b'>";
  const std::string text = pnml_text(*prefix);
  EXPECT_NE(text.find("<text>&lt;a&amp;&quot;b&apos;&gt;</text>"), std::string::npos);
}

TEST(Writers, WriteEachFormOfCutOffInPnml) {
  auto prefix = unfold(net_from("marked p; a: p -> q; b: q -> r; c: r -> q; d: r -> p"));
  const auto has = [&](const std::string& part) {
    return pnml_text(*prefix).find("<cut-off>" + part) != std::string::npos;
  };
  EXPECT_TRUE(has("<correspondent/></cut-off>"));
  EXPECT_TRUE(has("<correspondent ref=\"e0\"/></cut-off>"));
  std::vector<net::EventOf<net::Net>*> several{prefix->events[0].get(), prefix->events[1].get()};
  prefix->events[2]->cut_off.set_correspondents(several);
  EXPECT_TRUE(has("<correspondent ref=\"e0\" ref=\"e1\"/></cut-off>"));
}

}  // namespace
}  // namespace vorel::oracle
