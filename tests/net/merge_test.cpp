#include "net/merge.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <tuple>

#include "oracle/net_text.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_merger.h"
#include "oracle/reference_unfolder.h"
#include "support/legacy_files.h"
#include "support/process_builder.h"

namespace vorel::net {
namespace {

using Occurrence = std::pair<std::string, int>;  // place and depth
using Occurrences = std::set<Occurrence>;
using MergedEvent = std::tuple<std::string, bool, Occurrences, Occurrences>;

template <class N>
Occurrences occurrences(const base::PtrList<MpConditionOf<N>>& conditions) {
  Occurrences result;
  for (const auto* c : conditions) result.emplace(c->place->name, c->occurrence_depth);
  return result;
}

// The process whatever its numbering; the net as text, numbers included.
template <class N>
struct Content {
  explicit Content(const MergedProcessOf<N>& process) {
    for (const auto& c : process.conditions) {
      conditions.emplace(c->place->name, c->occurrence_depth, c->initial_marking);
    }
    for (const auto& e : process.events) {
      events.emplace(e->transition->name, e->is_cut_off(), occurrences<N>(e->preset),
                     occurrences<N>(e->postset));
    }
    const std::string text = support::describe(process);
    net = text.substr(0, text.find("condition "));
  }
  bool operator==(const Content&) const = default;

  std::multiset<std::tuple<std::string, int, std::uint32_t>> conditions;
  std::multiset<MergedEvent> events;
  std::string net;
};

template <class N>
void expect_same_as_reference(const PrefixOf<N>& prefix) {
  const Content<N> merged(net::merge(prefix));
  EXPECT_TRUE(merged == Content<N>(oracle::merge(prefix)));
  EXPECT_TRUE(support::describe(prefix).starts_with(merged.net + "condition "));
}

TEST(Merge, RandomNetsAndStgsMergeAsByDefinition) {
  int merged = 0;
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(seed);
    const auto prefix = oracle::unfold(oracle::random_net(seed), 300);
    const auto stg_prefix = oracle::unfold(
        oracle::random_stg(seed, {.dummies = seed % 2 == 0, .toggles = seed % 3 == 0}), 300);
    if (prefix) expect_same_as_reference(*prefix);
    if (stg_prefix) expect_same_as_reference(*stg_prefix);
    merged += (prefix ? 1 : 0) + (stg_prefix ? 1 : 0);
  }
  EXPECT_GT(merged, 300);
}

TEST(Merge, ConditionsAreNumberedByPlaceAndDepthAndEventsByTheirFirst) {
  support::ProcessBuilder<NetPrefix> b;
  auto& q = b.condition("q");
  auto& p = b.condition("p");
  auto &p1 = b.condition("p"), &p2 = b.condition("p"), &r = b.condition("r");
  b.event("u", {&p}, {&p1}, true);
  b.event("t", {&p}, {&p2});
  b.event("u", {&p}, {&b.condition("p")});
  b.event("v", {&p2, &q}, {&b.condition("p"), &r}, true);
  b.event("t", {&p1}, {&b.condition("p")});
  EXPECT_EQ(
      support::describe(merge(b.finish())).substr(support::describe(*b.process).find("condition ")),
      "condition p depth 1 marked 1 <- -> 0 1\n"
      "condition p depth 2 marked 0 <- 0 1 -> 2 3\n"
      "condition p depth 3 marked 0 <- 2 3 ->\n"
      "condition q depth 1 marked 1 <- -> 2\n"
      "condition r depth 1 marked 0 <- 2 ->\n"
      "event u <- 0 -> 1\n"
      "event t <- 0 -> 1\n"
      "event v <- 1 3 -> 2 4 cut-off\n"
      "event t <- 1 -> 2\n");
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

TEST(Merge, EventsMayBeNumberedAgainstTheirCausalOrder) {
  support::ProcessBuilder<NetPrefix> b;
  auto &p = b.condition("p"), &p1 = b.condition("p"), &p2 = b.condition("p");
  b.event("t", {&p1}, {&p2});
  b.event("t", {&p}, {&p1});
  expect_same_as_reference(b.finish());
}

TEST(Merge, LabelsAndInitialValuesAreKept) {
  support::ProcessBuilder<StgPrefix> b;
  b.event("i.a+", {&b.condition("p")}, {&b.condition("q")});
  b.event("x-", {&b.condition("r")}, {&b.condition("s")});
  b.finish().signals[0]->initial_value = 1;
  expect_same_as_reference(*b.process);
}

TEST(Merge, ConditionsLeftOutAfterCutOffsAreMergedLikeTheOthers) {
  support::ProcessBuilder<NetPrefix> listed, left_out;
  auto& p = listed.condition("p");
  listed.event("t", {&p}, {&listed.condition("p"), &listed.condition("q")}, true);
  auto& same_p = left_out.condition("p");
  auto& t = left_out.event("t", {&same_p}, {}, true);
  left_out.condition("q");
  listed.finish();
  NetPrefix& prefix = left_out.finish();
  prefix.conditions.pop_back();
  std::array<ConditionOf<Net>, 2> conditions;
  for (std::size_t i = 0; i < 2; ++i) {
    conditions[i].place = prefix.places[i].get();
    prefix.places[i]->initial_marking = i == 0 ? 1 : 0;
    add_link(t, conditions[i]);
    add_arc(*t.transition, *conditions[i].place);
  }
  EXPECT_EQ(support::describe(merge(prefix)), support::describe(merge(*listed.process)));
}

}  // namespace
}  // namespace vorel::net
