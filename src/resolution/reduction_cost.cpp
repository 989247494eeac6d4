#include "resolution/reduction_cost.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/sort_unique.h"
#include "net/event_relations.h"
#include "resolution/core_survival.h"
#include "resolution/critical_path.h"
#include "resolution/input_like.h"
#include "resolution/logic_complexity.h"
#include "resolution/signal_locks.h"

namespace vorel::resolution {
namespace {

using net::StgPrefix;
using net::StgTransition;
using Event = StgPrefix::Event;

// Those that the transition leads to, or stands for, through dummies.
std::vector<net::SignalId> signals_from(const StgTransition& start) {
  std::vector<net::SignalId> signals;
  for (const StgTransition* transition : closure_through_dummies(start)) {
    if (!transition->signal->is_dummy()) signals.push_back(base::id_of(*transition->signal));
  }
  base::sort_unique(signals);
  return signals;
}

void append_signals_to(const net::Stg& stg, const StgTransition& end,
                       std::vector<net::SignalId>& signals) {
  base::MarkSet<StgTransition> seen(stg.transitions.size());
  std::vector<const StgTransition*> open{&end};
  while (!open.empty()) {
    const StgTransition& transition = *open.back();
    open.pop_back();
    if (!seen.insert(transition)) continue;
    if (!transition.signal->is_dummy()) {
      signals.push_back(base::id_of(*transition.signal));
      continue;
    }
    for (const net::StgPlace* place : transition.preset) {
      open.insert(open.end(), place->preset.begin(), place->preset.end());
    }
  }
}

class Evaluation {
 public:
  Evaluation(const StgPrefix& prefix, const CoreStore& store, const CostCoefficients& coefficients)
      : prefix_{prefix},
        store_{store},
        coefficients_{coefficients},
        counts_{prefix},
        survival_{prefix, counts_},
        path_{prefix},
        relations_{prefix},
        triggers_{trigger_signals(prefix)} {}

  // Nullopt if it removes no core.
  std::optional<ResolutionCost> run(const Reduction& reduction) {
    const CoreCounts cores = cores_kept(reduction);
    if (cores.csc + cores.usc == store_.cores.size()) return std::nullopt;
    ResolutionCost cost(coefficients_, reduction);
    cost.csc_cores = coefficients_.csc_cores == 0 ? 0 : cores.csc;
    cost.usc_cores = coefficients_.usc_cores == 0 ? 0 : cores.usc;
    cost.delay = coefficients_.delay == 0 ? 0 : delay(reduction);
    cost.logic = coefficients_.logic == 0 ? 0 : logic(reduction);
    cost.non_locked =
        coefficients_.non_locked_signals == 0 ? 0 : lock_numbers(prefix_, &reduction).unlocked;
    return cost;
  }

 private:
  CoreCounts cores_kept(const Reduction& reduction) {
    CoreCounts kept;
    for (const conflicts::Core& core : store_.cores) {
      switch (survival_.after(reduction, core)) {
        case CoreSurvival::Kept::no:
          break;
        case CoreSurvival::Kept::usc:
          ++kept.usc;
          break;
        case CoreSurvival::Kept::csc:
          ++kept.csc;
          break;
      }
    }
    return kept;
  }

  // The token that an event takes is put there by the source that is as many-th in its run, if one
  // is marked, with one less.
  std::uint64_t delay(const Reduction& reduction) {
    std::uint64_t longest = 0;
    const OccurrenceCount& targets = counts_.of(*reduction.target);
    for (const auto& event : prefix_.events) {
      if (event->transition != reduction.target) continue;
      const std::uint32_t number = targets[*event] - (reduction.marked ? 1 : 0);
      if (number == 0) continue;
      relations_.choose(*event);
      for (const auto& source : prefix_.events) {
        if (relations_.relation_of(*source) != net::EventRelation::concurrent ||
            !is_nth_source(reduction, *source, number)) {
          continue;
        }
        const std::uint32_t time = path_.depth(*source) + CriticalPath::weight(*event);
        if (time > path_.depth(*event))
          longest = std::max<std::uint64_t>(longest, time - path_.depth(*event));
      }
    }
    return longest;
  }

  bool is_nth_source(const Reduction& reduction, const Event& event, std::uint32_t number) {
    if (std::ranges::count(reduction.sources, event.transition) == 0) return false;
    std::uint32_t count = 0;
    for (const StgTransition* source : reduction.sources) count += counts_.of(*source)[event];
    return count == number;
  }

  std::uint64_t logic(const Reduction& reduction) const {
    TriggerSignals triggers = triggers_;
    std::vector<net::SignalId> added;
    for (const StgTransition* source : reduction.sources) {
      append_signals_to(prefix_, *source, added);
    }
    for (const net::SignalId signal : signals_from(*reduction.target)) {
      auto& list = triggers[signal];
      list.insert(list.end(), added.begin(), added.end());
      base::sort_unique(list);
    }
    return logic_complexity(triggers, prefix_, coefficients_.pwr_of_2);
  }

  const StgPrefix& prefix_;
  const CoreStore& store_;
  const CostCoefficients& coefficients_;
  OccurrenceCounts counts_;
  CoreSurvival survival_;
  const CriticalPath path_;
  net::EventRelations relations_;
  const TriggerSignals triggers_;
};

}  // namespace

std::vector<ResolutionCost> evaluate_reductions(const StgPrefix& prefix, const CoreStore& store,
                                                const CostCoefficients& coefficients,
                                                std::span<const Reduction> reductions) {
  std::vector<ResolutionCost> costs;
  if (reductions.empty() || store.cores.empty()) return costs;
  Evaluation evaluation(prefix, store, coefficients);
  for (const Reduction& reduction : reductions) {
    if (auto cost = evaluation.run(reduction)) costs.push_back(std::move(*cost));
  }
  return costs;
}

}  // namespace vorel::resolution
