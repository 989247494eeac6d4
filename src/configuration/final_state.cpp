#include "configuration/final_state.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "configuration/decoding.h"

namespace vorel::configuration {
namespace {

using Event = net::StgPrefix::Event;

// Whether the event can fire after the configuration, perhaps after dummies: whatever it still
// waits for is a dummy, and nothing that it or they consume is gone.
bool can_fire(const Event& event, const std::vector<bool>& inside) {
  if (inside[event.index]) return false;
  std::vector<const Event*> missing{&event};
  for (std::size_t next = 0; next < missing.size(); ++next) {
    for (const auto* condition : missing[next]->preset) {
      const bool is_consumed = std::ranges::any_of(
          condition->postset, [&inside](const Event* rival) { return inside[rival->index]; });
      if (is_consumed) return false;
      if (condition->is_initial() || inside[condition->pre_event->index]) continue;
      const Event& producer = *condition->pre_event;
      if (!producer.transition->signal->is_dummy() || producer.is_cut_off()) return false;
      if (std::ranges::find(missing, &producer) == missing.end()) missing.push_back(&producer);
    }
  }
  return true;
}

std::string unsafe_message(const net::StgPrefix& prefix, const net::StgPlace& place,
                           std::span<const Event* const> events) {
  std::string text = "the net is not safe, place " + place.name + "; trace:\n";
  std::string_view separator;
  for (const Event* event : firing_sequence<net::StgPrefix>(prefix, events)) {
    text += separator;
    text += event->transition->name;
    separator = ", ";
  }
  return text;
}

}  // namespace

SignalEvents::SignalEvents(const net::StgPrefix& prefix) : first_(prefix.signals.size() + 1) {
  const auto is_visible = [](const auto& event) { return !event->transition->signal->is_dummy(); };
  for (const auto& event : prefix.events) {
    if (is_visible(event)) ++first_[event->transition->signal->index + 1];
  }
  for (std::size_t i = 1; i < first_.size(); ++i) first_[i] += first_[i - 1];
  events_.resize(first_.back());
  std::vector<std::uint32_t> next(first_.begin(), first_.end() - 1);
  for (const auto& event : prefix.events) {
    if (is_visible(event)) events_[next[event->transition->signal->index]++] = event.get();
  }
}

std::span<const Event* const> SignalEvents::of(std::uint32_t signal) const {
  assert(signal + 1 < first_.size());
  return std::span(events_).subspan(first_[signal], first_[signal + 1] - first_[signal]);
}

std::vector<bool> FinalStates::code(const EventSet& configuration) const {
  std::vector<bool> values(prefix_.internals_end);
  for (std::uint32_t i = 0; i < prefix_.internals_end; ++i) {
    values[i] = prefix_.signals[i]->initial_value == 1;
  }
  for (const std::uint32_t number : configuration) {
    const net::Signal& signal = *prefix_.events[number]->transition->signal;
    if (!signal.is_dummy()) values[signal.index].flip();
  }
  return values;
}

bool FinalStates::is_excited(std::uint32_t signal, const std::vector<bool>& inside) const {
  return std::ranges::any_of(events_.of(signal),
                             [&inside](const Event* event) { return can_fire(*event, inside); });
}

std::vector<std::uint32_t> FinalStates::excited_signals(const EventSet& configuration) const {
  const std::vector<bool> inside = membership(prefix_, configuration);
  std::vector<std::uint32_t> signals;
  for (std::uint32_t signal = prefix_.inputs_end; signal < prefix_.internals_end; ++signal) {
    if (is_excited(signal, inside)) signals.push_back(signal);
  }
  return signals;
}

bool FinalStates::next_value(std::uint32_t signal, const EventSet& configuration) const {
  assert(signal < prefix_.internals_end);
  return code(configuration)[signal] != is_excited(signal, membership(prefix_, configuration));
}

std::optional<std::vector<std::uint32_t>> FinalStates::marking(
    const EventSet& configuration) const {
  const auto events = events_of(prefix_, configuration);
  std::vector<std::uint32_t> places;
  for (const auto* condition : final_cut<net::StgPrefix>(prefix_, events)) {
    places.push_back(condition->place->index);
  }
  std::ranges::sort(places);
  const auto repeated = std::ranges::adjacent_find(places);
  if (repeated == places.end()) return places;
  base::print_error(unsafe_message(prefix_, *prefix_.places[*repeated], events));
  return std::nullopt;
}

}  // namespace vorel::configuration
