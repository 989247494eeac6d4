#include "net/merge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

#include "oracle/net_text.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_merger.h"
#include "oracle/reference_unfolder.h"
#include "support/legacy_files.h"
#include "support/process_builder.h"
#include "support/seeds.h"

namespace vorel::net {
namespace {

// With events against their causal order, and values of signals. Conditions are numbered by place
// and depth, events by their first.
template <class N>
void expect_same_as_reference(PrefixOf<N>& prefix) {
  std::ranges::reverse(prefix.events);
  base::renumber(prefix.events);
  sort_links(prefix);
  if constexpr (N::has_signals) {
    for (const auto& signal : prefix.signals)
      signal->initial_value = static_cast<std::uint8_t>(signal->index % 3);
  }
  auto expected = oracle::merge(prefix);
  std::ranges::sort(expected.conditions, {}, [](const auto& condition) {
    return std::pair(condition->place->index, condition->occurrence_depth);
  });
  base::renumber(expected.conditions);
  sort_links(expected);
  EXPECT_EQ(support::describe(net::merge(prefix)), support::describe(expected));
}

TEST(Merge, RandomNetsAndStgsMergeAsByDefinition) {
  std::size_t merged = 0;
  const std::uint64_t tried = support::for_each_seed(200, [&](std::uint64_t seed) {
    auto prefix = oracle::unfold(oracle::random_net(seed), 300);
    auto stg_prefix = oracle::unfold(
        oracle::random_stg(seed, {.dummies = seed % 2 == 0, .toggles = seed % 3 == 0}), 300);
    if (prefix) expect_same_as_reference(*prefix);
    if (stg_prefix) expect_same_as_reference(*stg_prefix);
    merged += (prefix ? 1u : 0u) + (stg_prefix ? 1u : 0u);
  });
  EXPECT_GT(merged, tried * 3 / 2);
}

// Counts beyond a byte, and more places than are counted at a time.
TEST(Merge, LongRunsAndManyPlacesAreCountedInFull) {
  support::ProcessBuilder<NetPrefix> deep, broad;
  auto *p = &deep.condition("p"), *q = &deep.condition("q");
  for (int i = 0; i < 400; ++i) {
    auto *next = &deep.condition("p"), *other = i % 2 == 0 ? &deep.condition("q") : q;
    if (i % 2 == 0) {
      deep.event("t", {p, q}, {next, other});
    } else {
      deep.event("u", {p}, {next});
    }
    p = next;
    q = other;
  }
  auto* c = &broad.condition("p0");
  for (int i = 1; i < 500; ++i) {
    auto* next = &broad.condition("p" + std::to_string(i % 150));
    broad.event("t" + std::to_string(i % 150), {c}, {next});
    c = next;
  }
  expect_same_as_reference(deep.finish());
  expect_same_as_reference(broad.finish());
  EXPECT_EQ(merge(*deep.process).conditions[400]->occurrence_depth, 401);
  EXPECT_EQ(merge(*broad.process).conditions.size(), 500u);
}

TEST(Merge, ConditionsLeftOutAfterCutOffsAreMergedLikeTheOthers) {
  const auto listed = support::process_from<NetPrefix>("t!: p -> p' q");
  const auto left_out = support::process_from<NetPrefix>("t!: p ->; q");
  NetPrefix& prefix = *left_out;
  auto& t = *prefix.events[0];
  prefix.conditions.pop_back();
  std::array<ConditionOf<Net>, 2> conditions;
  for (std::size_t i = 0; i < 2; ++i) {
    conditions[i].place = prefix.places[i].get();
    prefix.places[i]->initial_marking = i == 0 ? 1 : 0;
    add_link(t, conditions[i]);
    add_arc(*t.transition, *conditions[i].place);
  }
  EXPECT_EQ(support::describe(merge(prefix)), support::describe(merge(*listed)));
}

}  // namespace
}  // namespace vorel::net
