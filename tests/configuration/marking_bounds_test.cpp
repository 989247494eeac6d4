#include "configuration/marking_bounds.h"

#include <gtest/gtest.h>

#include <string>

#include "net/merge.h"
#include "oracle/net_builder.h"
#include "oracle/random_net.h"
#include "oracle/reference_unfolder.h"
#include "oracle/state_graph.h"
#include "support/seeds.h"

namespace vorel::configuration {
namespace {

using Clauses = std::vector<MarkingFilter::Clause>;

constexpr std::uint64_t enough = 10'000'000;  // steps

// Clauses on the markings in which nothing fires, or on all of them.
class Filter {
 public:
  Filter(const net::NetMergedProcess& process, bool only_dead)
      : bounds_{TokenFlow::of(process), enough},
        filter_{bounds_,
                [&](sat::CnfFormula& formula, const sat::Lits& marked) {
                  for (const auto& transition : process.transitions) {
                    sat::Lits clause;
                    for (const auto* place : transition->preset)
                      clause.push_back(~marked[place->index]);
                    if (only_dead) formula.add_clause(clause, sat::PermanentGroup);
                  }
                },
                std::vector<bool>(process.places.size(), true)},
        traps{filter_.traps()},
        local{filter_.local_clauses()} {}

 private:
  MarkingBounds bounds_;
  MarkingFilter filter_;

 public:
  const Clauses traps, local;
};

bool allow(const Clauses& clauses, const oracle::Marking& marking) {
  return std::ranges::all_of(clauses, [&marking](const auto& clause) {
    return std::ranges::any_of(clause, [&marking](const PlaceLiteral& literal) {
      return marking[literal.place] == literal.is_marked;
    });
  });
}

TEST(MarkingFilter, AllowsAllReachableMarkings) {
  std::size_t traps = 0, local = 0;
  support::for_each_seed(60, [&](std::uint64_t seed) {
    const auto merged = net::merge(*oracle::unfold(oracle::random_net(seed)));
    const auto graph = oracle::explore<net::Net>(merged);
    for (const bool only_dead : {false, true}) {
      const Filter filter(merged, only_dead);
      traps += filter.traps.size();
      local += filter.local.size();
      for (const auto& state : graph.states)
        EXPECT_TRUE(allow(filter.traps, state.marking) && allow(filter.local, state.marking));
    }
  });
  EXPECT_GT(traps, 0u);
  EXPECT_GT(local, 0u);
}

// Who enters is counted. A warden closes the door, takes over the count, and opens it when, by his
// own count, all have passed him.
net::Net warden() {
  oracle::NetBuilder<net::Net> b;
  const auto numbered = [](const char* name, int i) { return name + std::to_string(i); };
  for (const char* name : {"open", "inside0", "left0", "out0", "out1"}) b.mark(name);
  for (int i = 0; i < 3; ++i) {
    b.add_transition(numbered("close", i)).consume("open").consume(numbered("inside", i));
    b.consume("left0")
        .produce("closed")
        .produce(numbered("inside", i))
        .produce(numbered("left", i));
    for (int guest = 0; i > 0 && guest < 2; ++guest) {
      const std::string end = std::to_string(guest) + "_" + std::to_string(i);
      b.add_transition("enter" + end).consume("open").consume(numbered("out", guest));
      b.consume(numbered("inside", i - 1)).produce(numbered("inside", i));
      b.produce("open").produce(numbered("in", guest));
      b.add_transition("leave" + end).consume("closed").consume(numbered("in", guest));
      b.consume(numbered("inside", i)).produce(numbered("inside", i - 1));
      b.produce("closed").produce(numbered("leaving", guest));
      b.add_transition("pass" + end).consume("closed").consume(numbered("leaving", guest));
      b.consume(numbered("left", i)).produce(numbered("left", i - 1));
      b.produce("closed").produce(numbered("gone", guest));
    }
  }
  b.add_transition("reopen").consume("closed").consume("left0").produce("open").produce("left0");
  return b.finish();
}

TEST(MarkingFilter, SeesThatACopyAgreesWithWhatItIsACopyOf) {
  const auto merged = net::merge(*oracle::unfold(warden()));
  const auto graph = oracle::explore<net::Net>(merged);
  ASSERT_FALSE(graph.has_deadlock());
  const auto place = [&merged](const char* name) {
    return std::ranges::find(merged.places, name, &net::Place::name) - merged.places.begin();
  };
  oracle::Marking stuck(merged.places.size());
  for (const char* name : {"closed", "inside0", "left1", "gone0", "gone1"})
    stuck[place(name)] = true;
  ASSERT_TRUE(oracle::is_dead<net::Net>(merged, stuck));
  const Filter filter(merged, true);
  EXPECT_TRUE(allow(filter.traps, stuck));
  EXPECT_FALSE(allow(filter.local, stuck));
  for (const auto& state : graph.states) EXPECT_TRUE(allow(filter.local, state.marking));
}

}  // namespace
}  // namespace vorel::configuration
