#include "configuration/event_set.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace vorel::configuration {
namespace {

using Event = net::StgPrefix::Event;

bool is_dummy(const Event& event) { return event.transition->signal->is_dummy(); }

bool has_successor_in(const Event& event, const std::vector<bool>& inside) {
  return std::ranges::any_of(event.postset, [&inside](const auto* condition) {
    return std::ranges::any_of(condition->postset,
                               [&inside](const Event* next) { return inside[next->index]; });
  });
}

}  // namespace

EventSet event_set(std::span<const Event* const> events) {
  EventSet set;
  set.reserve(events.size());
  for (const Event* event : events) set.push_back(event->index);
  std::ranges::sort(set);
  return set;
}

std::vector<const Event*> events_of(const net::StgPrefix& prefix, const EventSet& set) {
  std::vector<const Event*> events;
  events.reserve(set.size());
  for (const std::uint32_t number : set) events.push_back(prefix.events[number].get());
  return events;
}

std::vector<bool> membership(const net::StgPrefix& prefix, const EventSet& set) {
  std::vector<bool> inside(prefix.events.size());
  for (const std::uint32_t number : set) inside[number] = true;
  return inside;
}

bool includes(const EventSet& large, const EventSet& small) {
  return small.size() <= large.size() && std::ranges::includes(large, small);
}

EventSet set_difference(const EventSet& a, const EventSet& b) {
  EventSet result;
  std::ranges::set_difference(a, b, std::back_inserter(result));
  return result;
}

EventSet set_union(const EventSet& a, const EventSet& b) {
  EventSet result;
  std::ranges::set_union(a, b, std::back_inserter(result));
  return result;
}

EventSet symmetric_difference(const EventSet& a, const EventSet& b) {
  EventSet result;
  std::ranges::set_symmetric_difference(a, b, std::back_inserter(result));
  return result;
}

bool is_causally_closed(const net::StgPrefix& prefix, const EventSet& set) {
  assert(std::ranges::is_sorted(set));
  return std::ranges::all_of(set, [&](std::uint32_t number) {
    return std::ranges::all_of(prefix.events[number]->preset, [&set](const auto* condition) {
      return condition->is_initial() ||
             std::ranges::binary_search(set, condition->pre_event->index);
    });
  });
}

bool has_only_dummies(const net::StgPrefix& prefix, const EventSet& set) {
  return std::ranges::all_of(
      set, [&prefix](std::uint32_t number) { return is_dummy(*prefix.events[number]); });
}

EventSet without_maximal_dummies(const net::StgPrefix& prefix, const EventSet& configuration) {
  std::vector<bool> inside = membership(prefix, configuration);
  std::vector<const Event*> open;
  for (const std::uint32_t number : configuration) {
    if (is_dummy(*prefix.events[number])) open.push_back(prefix.events[number].get());
  }
  while (!open.empty()) {
    const Event& event = *open.back();
    open.pop_back();
    if (!inside[event.index] || !is_dummy(event) || has_successor_in(event, inside)) continue;
    inside[event.index] = false;
    for (const auto* condition : event.preset) {  // dummies that this one has kept
      if (!condition->is_initial()) open.push_back(condition->pre_event);
    }
  }
  EventSet rest;
  std::ranges::copy_if(configuration, std::back_inserter(rest),
                       [&inside](std::uint32_t number) { return inside[number]; });
  return rest;
}

}  // namespace vorel::configuration
