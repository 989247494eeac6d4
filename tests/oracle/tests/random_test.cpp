// Random nets and STGs: what the generators promise, and prefixes that stand the brute force.
#include <gtest/gtest.h>

#include "oracle/coding.h"
#include "oracle/net_text.h"
#include "oracle/prefix_checks.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_merger.h"
#include "oracle/reference_unfolder.h"

namespace vorel::oracle {
namespace {

constexpr std::uint64_t net_seeds = 200;
constexpr std::uint64_t stg_seeds = 70;

template <class N>
void expect_complete_prefix(const N& net) {
  const StateGraph<N> graph = explore(net);
  ASSERT_EQ(graph.outcome, Exploration::complete);
  const auto prefix = unfold(net);
  ASSERT_TRUE(prefix);
  EXPECT_EQ(branching_fault(*prefix), "");
  EXPECT_EQ(completeness_fault(*prefix, graph), "");
  const auto is_not_cut_off = [](const auto& event) { return !event->is_cut_off(); };
  const auto kept = std::ranges::count_if(prefix->events, is_not_cut_off);
  EXPECT_LT(static_cast<std::size_t>(kept), graph.states.size());  // all reach different states
}

TEST(Unfolder, GivesCompletePrefixesOfRandomNets) {
  for (std::uint64_t seed = 0; seed < net_seeds; ++seed) {
    SCOPED_TRACE(seed);
    expect_complete_prefix(random_net(seed));
  }
}

TEST(Unfolder, GivesCompletePrefixesOfRandomStgs) {
  for (std::uint64_t seed = 0; seed < stg_seeds; ++seed) {
    SCOPED_TRACE(seed);
    expect_complete_prefix(random_stg(seed));
    expect_complete_prefix(random_stg(seed, {.dummies = true}));
    expect_complete_prefix(random_stg(seed, {.toggles = true}));
  }
}

TEST(Unfolder, GivesCompletePrefixesOfTrapNets) {
  for (const TrapNet& trap : trap_nets()) {
    SCOPED_TRACE(trap.name);
    expect_complete_prefix(net_from(trap.text));
  }
}

TEST(Unfolder, StopsAtTheBoundOnEvents) {
  EXPECT_TRUE(unfold(philosophers(4), 12));
  EXPECT_FALSE(unfold(philosophers(4), 11));
}

TEST(Merger, KeepsArcsAndLeavesNoTwoClassesAlike) {
  for (std::uint64_t seed = 0; seed < net_seeds; ++seed) {
    SCOPED_TRACE(seed);
    const auto prefix = unfold(random_net(seed));
    const net::NetMergedProcess merged = merge(*prefix);
    std::set<std::pair<const net::Place*, std::int32_t>> classes;
    for (const auto& c : merged.conditions) {
      EXPECT_TRUE(classes.emplace(c->place, c->occurrence_depth).second);
      EXPECT_EQ(c->is_initial(), c->occurrence_depth == 1 && c->place->initial_marking == 1);
      // An occurrence of depth d follows one of depth d - 1.
      EXPECT_TRUE(c->occurrence_depth == 1 ||
                  classes.contains({c->place, c->occurrence_depth - 1}));
    }
    std::set<std::vector<const void*>> events;
    for (const auto& e : merged.events) {
      EXPECT_EQ(e->preset.size(), e->transition->preset.size());
      EXPECT_EQ(e->postset.size(), e->transition->postset.size());
      std::vector<const void*> key{e->transition, nullptr};
      key.insert(key.end(), e->preset.begin(), e->preset.end());
      key.insert(key.end(), e->postset.begin(), e->postset.end());
      EXPECT_TRUE(events.insert(key).second);
    }
  }
}

TEST(RandomNets, HaveADeadlockInAboutHalfOfAll) {
  int deadlocks = 0;
  for (std::uint64_t seed = 0; seed < net_seeds; ++seed) {
    deadlocks += explore(random_net(seed)).has_deadlock() ? 1 : 0;
  }
  EXPECT_GT(deadlocks, 70);
  EXPECT_LT(deadlocks, 130);
}

TEST(RandomStgs, AreConsistentWithAndWithoutConflictsAndDeadlocks) {
  int with_csc_conflict = 0, with_deadlock = 0, with_dummies = 0, with_toggles = 0;
  for (std::uint64_t seed = 0; seed < 3 * stg_seeds; ++seed) {
    const RandomStgParams params{.dummies = seed % 3 == 1, .toggles = seed % 3 == 2};
    const net::Stg stg = random_stg(seed, params);
    const StateGraph<net::Stg> graph = explore(stg);
    const auto initial = find_initial_values(stg, graph);
    ASSERT_TRUE(initial) << seed;
    with_csc_conflict += csc_conflict_signals(stg, graph, *initial).empty() ? 0 : 1;
    with_deadlock += graph.has_deadlock() ? 1 : 0;
    with_dummies += stg.internals_end < stg.signals.size() ? 1 : 0;
    with_toggles += std::ranges::any_of(stg.transitions, [](const auto& t) {
      return t->sign == net::Sign::toggle && !t->signal->is_dummy();
    });
  }
  EXPECT_GT(with_csc_conflict, 60);
  EXPECT_LT(with_csc_conflict, 150);
  EXPECT_GT(with_deadlock, 5);
  EXPECT_GT(with_dummies, 40);
  EXPECT_GT(with_toggles, 40);
}

}  // namespace
}  // namespace vorel::oracle
