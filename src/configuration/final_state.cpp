#include "configuration/final_state.h"

#include <algorithm>
#include <cassert>
#include <string>

#include "base/messages.h"
#include "configuration/decoding.h"

namespace vorel::configuration {
namespace {

template <net::Process P>
std::string unsafe_message(const P& process, const typename P::NetType::Place& place,
                           std::span<const typename P::Event* const> events) {
  std::string text = "the net is not safe, place " + place.name + "; trace:\n";
  std::string_view separator;
  for (const auto* event : firing_sequence<P>(process, events)) {
    text += separator;
    text += event->transition->name;
    separator = ", ";
  }
  return text;
}

}  // namespace

template <net::Process P>
FinalState<P>::FinalState(const StateStructure<P>& structure, std::span<const Event* const> events,
                          Enabledness enabledness)
    : structure_{structure}, enabledness_{enabledness}, has_fired_(process().events.size()) {
  for (const Event* event : events) has_fired_[*event] = true;
  assert(is_configuration());
  assert((std::is_same_v<P, net::StgPrefix>) || enabledness == Enabledness::direct);
}

template <net::Process P>
FinalState<P>::FinalState(const StateStructure<P>& structure, const EventSet& configuration,
                          Enabledness enabledness) requires std::is_same_v<P, net::StgPrefix>
    : structure_{structure},
      enabledness_{enabledness},
      has_fired_(membership(process(), configuration)) {
  assert(is_configuration());
}

template <net::Process P>
bool FinalState<P>::is_configuration() const {
  return std::ranges::all_of(process().events, [this](const auto& event) {
    if (!has_fired_[*event]) return true;
    return std::ranges::all_of(event->preset, [this](const Condition* condition) {
      const auto has_fired = [this](const Event* consumer) { return has_fired_[*consumer]; };
      return is_produced(*condition) && std::ranges::count_if(condition->postset, has_fired) == 1;
    });
  });
}

template <net::Process P>
bool FinalState<P>::is_consumed(const Condition& condition) const {
  return std::ranges::any_of(condition.postset,
                             [this](const Event* event) { return has_fired_[*event]; });
}

template <net::Process P>
bool FinalState<P>::is_produced(const Condition& condition) const {
  return condition.is_initial() ||
         std::ranges::any_of(condition.producers(),
                             [this](const Event* event) { return has_fired_[*event]; });
}

template <net::Process P>
bool FinalState<P>::is_marked(const Condition& condition) const {
  return is_produced(condition) && !is_consumed(condition);
}

template <net::Process P>
bool FinalState<P>::is_marked(const Place& place) const {
  return std::ranges::any_of(structure_.instances().conditions_of(base::id_of(place)),
                             [this](const auto* condition) { return is_marked(*condition); });
}

template <net::Process P>
bool FinalState<P>::is_enabled(const Event& event) const {
  assert(event.index < has_fired_.size());
  if (enabledness_ == Enabledness::via_dummies) return is_enabled_after_dummies(event);
  return std::ranges::all_of(event.preset,
                             [this](const auto* condition) { return is_marked(*condition); });
}

// Whatever the event still waits for is a dummy, and nothing that it or they consume is gone. In a
// prefix nothing else is needed: causes of one event are never in conflict.
template <net::Process P>
bool FinalState<P>::is_enabled_after_dummies(const Event& target) const {
  if constexpr (std::is_same_v<P, net::StgPrefix>) {
    if (has_fired_[target]) return false;
    std::vector<const Event*> missing{&target};
    for (std::size_t next = 0; next < missing.size(); ++next) {
      for (const Condition* condition : missing[next]->preset) {
        if (is_consumed(*condition)) return false;
        if (is_produced(*condition)) continue;
        const Event& producer = *condition->pre_event;
        if (!net::is_dummy(producer) || producer.is_cut_off()) return false;
        if (std::ranges::find(missing, &producer) == missing.end()) missing.push_back(&producer);
      }
    }
  }
  return true;
}

template <net::Process P>
bool FinalState<P>::is_enabled(const Transition& transition) const {
  const auto events = structure_.instances().events_of(base::id_of(transition));
  if constexpr (P::is_merged) {
    // A configuration may go on behind a cut-off, where what is enabled has no event.
    return !events.empty() && std::ranges::all_of(transition.preset, [this](const auto* place) {
      return is_marked(*place);
    });
  }
  return std::ranges::any_of(events, [this](const Event* event) { return is_enabled(*event); });
}

template <net::Process P>
bool FinalState<P>::is_excited(net::SignalId signal) const requires P::NetType::has_signals {
  if constexpr (P::is_merged) {
    return std::ranges::any_of(
        structure_.instances().transitions_of(signal),
        [this](const Transition* transition) { return is_enabled(*transition); });
  }
  return std::ranges::any_of(structure_.instances().events_of(signal),
                             [this](const Event* event) { return is_enabled(*event); });
}

template <net::Process P>
bool FinalState<P>::value(net::SignalId signal) const requires P::NetType::has_signals {
  assert(process().visible_signals().contains(signal) && "a dummy has no value");
  const auto edges =
      std::ranges::count_if(structure_.instances().events_of(signal),
                            [this](const Event* event) { return has_fired_[*event]; });
  return (base::element(process().signals, signal).initial_value == 1) != (edges % 2 != 0);
}

template <net::Process P>
bool FinalState<P>::next_value(net::SignalId signal) const requires P::NetType::has_signals {
  return value(signal) != is_excited(signal);
}

template <net::Process P>
base::IndexedBy<net::Signal, bool> FinalState<P>::code() const requires P::NetType::has_signals {
  base::IndexedBy<net::Signal, bool> values(process().internals_end);
  for (const net::SignalId signal : process().visible_signals()) {
    values[signal] = base::element(process().signals, signal).initial_value == 1;
  }
  for (const auto& event : process().events) {
    if (has_fired_[*event] && !net::is_dummy(*event)) {
      const net::SignalId signal = base::id_of(*event->transition->signal);
      values[signal] = !values[signal];
    }
  }
  return values;
}

template <net::Process P>
std::vector<net::SignalId> FinalState<P>::excited_signals() const requires P::NetType::has_signals {
  std::vector<net::SignalId> signals;
  for (const net::SignalId signal : process().driven_signals()) {
    if (is_excited(signal)) signals.push_back(signal);
  }
  return signals;
}

template <net::Process P>
std::vector<const typename P::Event*> FinalState<P>::fired_events() const {
  std::vector<const Event*> events;
  for (const auto& event : process().events) {
    if (has_fired_[*event]) events.push_back(event.get());
  }
  return events;
}

template <net::Process P>
std::optional<std::vector<base::Id<typename P::NetType::Place>>> FinalState<P>::marking() const {
  const auto events = fired_events();
  std::vector<base::Id<Place>> places;
  for (const auto* condition : final_cut<P>(process(), events)) {
    places.push_back(base::id_of(*condition->place));
  }
  std::ranges::sort(places);
  const auto repeated = std::ranges::adjacent_find(places);
  assert(places.size() <= process().conditions.size());
  if (repeated == places.end()) return places;
  base::print_error(
      unsafe_message<P>(process(), base::element(process().places, *repeated), events));
  return std::nullopt;
}

#define INSTANTIATE(P) template class FinalState<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
