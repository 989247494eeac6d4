// Reductions of concurrency: which are found, what comes of them, which cores they leave.
#include "resolution/reductions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <set>

#include "conflicts/conflicts_support.h"
#include "net/clone_net.h"
#include "oracle/history.h"
#include "oracle/prefix_checks.h"
#include "oracle/random.h"
#include "oracle/reduction_checks.h"
#include "oracle/resolution_checks.h"
#include "resolution/apply_reduction.h"
#include "resolution/core_survival.h"
#include "resolution/implicit_places.h"
#include "resolution/input_like.h"
#include "resolution/reduction_cost.h"
#include "resolution/resolution_support.h"

namespace vorel::resolution {
namespace {

using net::StgTransition;
using oracle::Waiting;
using Graph = oracle::StateGraph<net::Stg>;
using Texts = std::vector<std::string>;

oracle::WaitingPlace place_of(const Reduction& reduction) {
  oracle::WaitingPlace place{{}, reduction.target->name, reduction.marked};
  for (const StgTransition* source : reduction.sources) place.sources.push_back(source->name);
  return place;
}

Texts texts_of(const std::vector<Reduction>& list) {
  Texts texts;
  for (const Reduction& reduction : list) texts.push_back(to_text(reduction));
  return texts;
}

// The valid ones with one or two sources, all concurrent with the target.
template <class Visit>
void visit_valid_reductions(const net::StgPrefix& prefix, const Graph& graph, Visit visit) {
  for (const auto& target : prefix.transitions) {
    if (is_input_like(*target)) continue;
    std::vector<const StgTransition*> universe;
    for (const auto& source : prefix.transitions) {
      if (source != target && oracle::are_concurrent(graph, *source, *target))
        universe.push_back(source.get());
    }
    const auto try_out = [&](const std::vector<const StgTransition*>& sources) {
      for (const bool marked : {false, true}) {
        const Reduction reduction{sources, marked, target.get()};
        if (oracle::judge(prefix, graph, place_of(reduction)) == Waiting::valid) visit(reduction);
      }
    };
    for (std::size_t i = 0; i < universe.size(); ++i) {
      try_out({universe[i]});
      for (std::size_t j = 0; j < i; ++j) try_out({universe[j], universe[i]});
    }
  }
}

TEST(Reductions, AllAreValidAndFewSmallOnesAreMissed) {
  std::size_t found = 0, valid = 0, missed = 0;
  for (auto [seed, end] = support::seeds(80); seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    const net::Stg stg = oracle::random_stg(seed, {.dummies = seed % 3 == 0, .max_states = 60});
    const auto prefix = oracle::unfold(stg, 200);
    if (!prefix) continue;
    const auto graph = oracle::explore(stg);
    const auto list = reductions(*prefix, {});
    for (const Reduction& reduction : list) {
      EXPECT_EQ(oracle::judge(stg, graph, place_of(reduction)), Waiting::valid)
          << to_text(reduction);
    }
    found += list.size();
    if (!oracle::is_reversible(graph) || stg.transitions.size() > 14) continue;
    const Texts texts = texts_of(list);
    visit_valid_reductions(*prefix, graph, [&](const Reduction& reduction) {
      ++valid;
      missed += std::ranges::count(texts, to_text(reduction)) == 0 ? 1 : 0;
    });
  }
  std::cout << found << " reductions, missed " << missed << " of " << valid << '\n';
  EXPECT_LT(missed, valid / 10);
}

std::string fault_of(const net::StgPrefix& prefix) {
  if (std::string fault = oracle::branching_fault<net::Stg>(prefix); !fault.empty()) return fault;
  return oracle::completeness_fault(prefix, oracle::explore<net::Stg>(prefix));
}

TEST(Reductions, LeaveACompletePrefixOfANetThatWaits) {
  std::size_t applied = 0;
  for (auto [seed, end] = support::seeds(40); seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    auto prefix =
        oracle::unfold(oracle::random_stg(seed, {.dummies = seed % 2 == 0, .max_states = 60}));
    net::find_initial_values(*prefix);
    const auto list = reductions(*prefix, {});
    if (list.empty()) continue;
    const Reduction reduction = list[seed % list.size()];
    const net::Stg before = net::clone_net<net::Stg>(*prefix);
    const net::Signal* const signal = prefix->signals.front().get();
    ASSERT_TRUE(apply_reduction(*prefix, reduction));
    const oracle::ResolutionClaim claim{.resolved = false, .reduced = true};
    EXPECT_EQ(oracle::resolution_fault(before, *prefix, claim), "") << to_text(reduction);
    EXPECT_EQ(fault_of(*prefix), "");
    EXPECT_EQ(prefix->signals.front().get(), signal);
    EXPECT_EQ(prefix->places.size(), before.places.size() + 1);
    ++applied;
  }
  EXPECT_GT(applied, 10u);
}

// A place between random transitions that keeps none from firing.
net::Stg with_implicit_places(const net::Stg& stg, oracle::Random& random) {
  net::Stg result = net::clone_net(stg);
  for (int i = 0; i < 40; ++i) {
    const auto pick = [&] {
      return result.transitions[random.below(result.transitions.size())]->name;
    };
    const oracle::WaitingPlace place{{pick()}, pick(), random.chance(50)};
    if (place.sources.front() == place.target) continue;
    if (oracle::judge(result, oracle::explore(result), place) != Waiting::changes_nothing) continue;
    result = oracle::with_place(result, place);
    result.places.back()->name += std::to_string(i);
    net::sort_net(static_cast<net::NetOf<StgTransition>&>(result));
  }
  return result;
}

TEST(ImplicitPlaces, GoWithoutATrace) {
  std::size_t added = 0, removed = 0;
  for (auto [seed, end] = support::seeds(60); seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    oracle::Random random(seed);
    const net::Stg plain = oracle::random_stg(seed, {.dummies = seed % 2 == 0, .max_states = 60});
    auto prefix = oracle::unfold(with_implicit_places(plain, random));
    net::find_initial_values(*prefix);
    const net::Stg before = net::clone_net<net::Stg>(*prefix);
    ASSERT_TRUE(remove_implicit_places(*prefix, {}));
    EXPECT_EQ(oracle::resolution_fault(before, *prefix, {.resolved = false}), "");
    EXPECT_EQ(fault_of(*prefix), "");
    added += before.places.size() - plain.places.size();
    removed += before.places.size() - prefix->places.size();
  }
  EXPECT_GT(removed, added / 2);
  std::cout << removed << " removed, " << added << " added\n";
}

}  // namespace
}  // namespace vorel::resolution
