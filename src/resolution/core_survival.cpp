#include "resolution/core_survival.h"

#include <algorithm>

#include "configuration/final_state.h"
#include "net/causality.h"

namespace vorel::resolution {
namespace {

using configuration::EventSet;
using net::StgPrefix;
using Event = StgPrefix::Event;

}  // namespace

CoreSurvival::CoreSurvival(const StgPrefix& prefix, OccurrenceCounts& counts)
    : prefix_{prefix}, counts_{counts}, structure_{prefix}, pasts_(prefix.events.size()) {}

bool CoreSurvival::is_source(const Reduction& reduction, const Event& event) const {
  return std::ranges::count(reduction.sources, event.transition) != 0;
}

// Before the k-th target all may have fired that does not wait for it.
bool CoreSurvival::is_executable(const Reduction& reduction, const EventSet& configuration) {
  const OccurrenceCount& targets = counts_.of(*reduction.target);
  std::vector<std::uint32_t> sources_after;  // by the number of targets before
  std::uint32_t target_count = 0;
  for (const configuration::StgEventId id : configuration) {
    const Event& event = base::element(prefix_.events, id);
    if (event.transition == reduction.target) ++target_count;
    if (!is_source(reduction, event)) continue;
    sources_after.resize(std::max<std::size_t>(sources_after.size(), targets[event] + 1));
    ++sources_after[targets[event]];
  }
  std::uint32_t tokens = reduction.marked ? 1 : 0;
  for (std::uint32_t k = 1; k <= target_count; ++k) {
    if (k - 1 < sources_after.size()) tokens += sources_after[k - 1];
    if (tokens < k) return false;
  }
  return true;
}

bool CoreSurvival::are_executable(const Reduction& reduction, const Pair& pair) {
  return is_executable(reduction, pair.first) && is_executable(reduction, pair.second);
}

const EventSet& CoreSurvival::past_of(const Event& event) {
  EventSet& past = pasts_[event];
  if (past.empty()) {
    Event* last = &base::element(prefix_.events, base::id_of(event));
    const auto events = net::causal_past<net::Stg>(prefix_, {&last, 1});
    past = configuration::event_set(std::vector<const Event*>(events.begin(), events.end()));
  }
  return past;
}

// The configuration has not consumed what the others need; these are free of conflicts.
bool CoreSurvival::is_free(const EventSet& configuration, const EventSet& more) const {
  return std::ranges::all_of(more, [&](configuration::StgEventId id) {
    const auto& preset = base::element(prefix_.events, id).preset;
    return std::ranges::all_of(preset, [&](const auto* condition) {
      return std::ranges::none_of(condition->postset, [&](const Event* rival) {
        return std::ranges::binary_search(configuration, base::id_of(*rival));
      });
    });
  });
}

std::optional<CoreSurvival::Pair> CoreSurvival::with_past(const Pair& pair, const Event& event) {
  const EventSet& past = past_of(event);
  const EventSet more = configuration::set_difference(past, pair.first);
  if (more.empty() || more != configuration::set_difference(past, pair.second) ||
      !is_free(pair.first, more) || !is_free(pair.second, more)) {
    return std::nullopt;
  }
  return Pair{configuration::set_union(pair.first, more),
              configuration::set_union(pair.second, more)};
}

std::optional<CoreSurvival::Pair> CoreSurvival::executable_pair(const Reduction& reduction,
                                                                const conflicts::Core& core) {
  const Pair pair{core.first, core.second};
  if (are_executable(reduction, pair)) return pair;
  for (const auto& event : prefix_.events) {
    if (event->is_cut_off() || !is_source(reduction, *event)) continue;
    auto longer = with_past(pair, *event);
    if (longer && are_executable(reduction, *longer)) return longer;
  }
  return std::nullopt;
}

std::vector<net::SignalId> CoreSurvival::excited(const Reduction& reduction,
                                                 const EventSet& configuration) {
  const configuration::FinalState<StgPrefix> state(structure_, configuration);
  std::vector<net::SignalId> signals;
  for (const net::SignalId signal : state.excited_signals()) {
    const auto edges = structure_.instances().events_of(signal);
    const auto can_fire = [&](const Event* event) {
      return state.is_enabled(*event) &&
             is_executable(reduction, configuration::set_union(configuration, past_of(*event)));
    };
    if (std::ranges::any_of(edges, can_fire)) signals.push_back(signal);
  }
  return signals;
}

CoreSurvival::Kept CoreSurvival::after(const Reduction& reduction, const conflicts::Core& core) {
  const auto pair = executable_pair(reduction, core);
  if (!pair) return Kept::no;
  const bool same = excited(reduction, pair->first) == excited(reduction, pair->second);
  return same ? Kept::usc : Kept::csc;
}

}  // namespace vorel::resolution
