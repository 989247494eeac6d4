// Random nets and STGs: what the generators promise, and prefixes that stand the brute force.
#include <gtest/gtest.h>

#include "oracle/coding.h"
#include "oracle/net_text.h"
#include "oracle/prefix_checks.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
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

}  // namespace
}  // namespace vorel::oracle
