// Reductions of concurrency: which are found, what comes of them, which cores they leave.
#include "resolution/reductions.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "conflicts/conflicts_support.h"
#include "net/clone_net.h"
#include "oracle/prefix_checks.h"
#include "oracle/random.h"
#include "oracle/reduction_checks.h"
#include "oracle/resolution_checks.h"
#include "resolution/apply_reduction.h"
#include "resolution/core_survival.h"
#include "resolution/implicit_places.h"
#include "resolution/input_like.h"
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
        if (oracle::judge(prefix, place_of(reduction)) == Waiting::valid) visit(reduction);
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
      EXPECT_EQ(oracle::judge(stg, place_of(reduction)), Waiting::valid) << to_text(reduction);
    }
    found += list.size();
    if (!oracle::is_reversible(graph) || stg.transitions.size() > 14) continue;
    const Texts texts = texts_of(list);
    visit_valid_reductions(*prefix, graph, [&](const Reduction& reduction) {
      ++valid;
      missed += std::ranges::count(texts, to_text(reduction)) == 0 ? 1 : 0;
    });
  }
  EXPECT_GT(found, valid);
  EXPECT_LT(missed, valid / 7);  // some 6 % of many, and chance
}

std::string fault_of(const net::StgPrefix& prefix) {
  if (std::string fault = oracle::branching_fault<net::Stg>(prefix); !fault.empty()) return fault;
  return oracle::completeness_fault(prefix, oracle::explore<net::Stg>(prefix));
}

TEST(Reductions, LeaveACompletePrefixOfANetThatWaits) {
  std::size_t applied = 0;
  resolution_support::on_prefixes(60, [&](const net::StgPrefix& made, std::uint64_t seed) {
    net::StgPrefix prefix = net::clone_prefix(made);
    net::find_initial_values(prefix);
    const auto list = reductions(prefix, {});
    const auto graph = oracle::explore<net::Stg>(prefix);
    const bool dummies_disable = !oracle::signals_that_dummies_disable(graph).empty();
    if (list.empty() || graph.states.size() > 60 || dummies_disable) return;
    const Reduction reduction = list[seed % list.size()];
    const net::Stg before = net::clone_net<net::Stg>(prefix);
    const net::Signal* const signal = prefix.signals.front().get();
    ASSERT_TRUE(apply_reduction(prefix, reduction));
    const oracle::ResolutionClaim claim{.resolved = false, .reduced = true};
    EXPECT_EQ(oracle::resolution_fault(before, prefix, claim), "") << to_text(reduction);
    EXPECT_EQ(fault_of(prefix), "");
    EXPECT_EQ(prefix.signals.front().get(), signal);
    EXPECT_EQ(prefix.places.size(), before.places.size() + 1);
    ++applied;
  });
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
    if (oracle::judge(result, place) != Waiting::changes_nothing) continue;
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
}

using conflicts_support::Subject;
using Kept = CoreSurvival::Kept;

// The configurations of a prefix in the net that waits.
struct ReducedStates {
  ReducedStates(const Subject& given, const Reduction& reduction)
      : subject{given},
        net{oracle::with_place(given.prefix, place_of(reduction))},
        graph{oracle::explore(net)} {}

  // Fires what it can, the target last; nullopt when something is left.
  std::optional<std::uint32_t> state_after(configuration::EventSet left,
                                           const Reduction& reduction) const {
    std::uint32_t state = 0;
    const auto fire = [&](configuration::StgEventId id) {
      const auto& event = base::element(subject.prefix.events, id);
      const bool is_ready = std::ranges::none_of(event.preset, [&](const auto* condition) {
        return !condition->is_initial() &&
               std::ranges::count(left, base::id_of(*condition->pre_event)) != 0;
      });
      const auto arc = std::ranges::find(graph.states[state].arcs, event.transition->name,
                                         [](const auto& a) { return a.transition->name; });
      if (!is_ready || arc == graph.states[state].arcs.end()) return false;
      state = arc->target;
      return true;
    };
    while (!left.empty()) {
      std::ranges::stable_partition(left, [&](configuration::StgEventId id) {
        return base::element(subject.prefix.events, id).transition != reduction.target;
      });
      const auto fired = std::ranges::find_if(left, fire);
      if (fired == left.end()) return std::nullopt;
      left.erase(fired);
    }
    return state;
  }
  oracle::SignalSet excited(std::uint32_t state) const {
    oracle::SignalSet signals = oracle::enabled_through_dummies(graph, state);
    std::erase_if(
        signals, [&](std::uint32_t s) { return !net.driven_signals().contains(net::SignalId{s}); });
    return signals;
  }

  const Subject& subject;
  const net::Stg net;
  const Graph graph;
};

// The worst that is left of any two configurations with the core's sum.
Kept kept_by_trial(const Subject& subject, const Reduction& reduction,
                   const conflicts::Core& core) {
  const ReducedStates reduced(subject, reduction);
  Kept kept = Kept::no;
  for (const auto& one : subject.configurations) {
    for (const auto& other : subject.configurations) {
      const auto a = conflicts_support::set_of(one), b = conflicts_support::set_of(other);
      if (configuration::symmetric_difference(a, b) != core.sum) continue;
      const auto first = reduced.state_after(a, reduction),
                 second = reduced.state_after(b, reduction);
      if (!first || !second) continue;
      const bool same = reduced.excited(*first) == reduced.excited(*second);
      kept = std::max(kept, same ? Kept::usc : Kept::csc);
    }
  }
  return kept;
}

TEST(CoreSurvival, AgreesWithTheStatesOfTheNetThatWaits) {
  std::size_t tried = 0, same = 0, worse = 0, removed = 0;
  conflicts_support::on_subjects(60, {}, [&](const Subject& subject, std::uint64_t seed) {
    oracle::Random random(seed);
    const auto list = reductions(subject.prefix, {});
    if (list.empty()) return;
    OccurrenceCounts counts(subject.prefix);
    CoreSurvival survival(subject.prefix, counts);
    for (int i = 0; i < 200; ++i) {
      const auto pick = [&] { return random.below(subject.configurations.size()); };
      const auto &one = subject.configurations[pick()], &other = subject.configurations[pick()];
      if (!subject.is_csc_conflict(one.state, other.state)) continue;
      const conflicts::Core core(conflicts_support::set_of(one), conflicts_support::set_of(other));
      const Reduction& reduction = list[random.below(list.size())];
      const Kept estimate = survival.after(reduction, core);
      const Kept trial = kept_by_trial(subject, reduction, core);
      ++tried;
      same += estimate == trial ? 1 : 0;
      worse += estimate > trial ? 1 : 0;
      removed += trial == Kept::no ? 1 : 0;
    }
  });
  EXPECT_EQ(worse, 0u) << "of " << tried;
  EXPECT_GT(same, tried * 8 / 10);
  EXPECT_GT(removed, 0u);
}

}  // namespace
}  // namespace vorel::resolution
