#include "configuration/event_set.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace vorel::configuration {
namespace {

using Event = net::StgPrefix::Event;
using Membership = base::IndexedBy<Event, bool>;

bool has_successor_in(const Event& event, const Membership& inside) {
  return std::ranges::any_of(event.postset, [&inside](const auto* condition) {
    return std::ranges::any_of(condition->postset,
                               [&inside](const Event* next) { return inside[*next]; });
  });
}

}  // namespace

EventSet event_set(std::span<const Event* const> events) {
  EventSet set;
  set.reserve(events.size());
  for (const Event* event : events) set.push_back(base::id_of(*event));
  std::ranges::sort(set);
  assert(std::ranges::adjacent_find(set) == set.end() && "a configuration has no event twice");
  return set;
}

std::vector<const Event*> events_of(const net::StgPrefix& prefix, const EventSet& set) {
  std::vector<const Event*> events;
  events.reserve(set.size());
  for (const StgEventId id : set) events.push_back(&base::element(prefix.events, id));
  return events;
}

base::IndexedBy<Event, bool> membership(const net::StgPrefix& prefix, const EventSet& set) {
  Membership inside(prefix.events.size());
  for (const StgEventId id : set) inside[id] = true;
  return inside;
}

bool includes(const EventSet& large, const EventSet& small) {
  assert(std::ranges::is_sorted(large) && std::ranges::is_sorted(small));
  return small.size() <= large.size() && std::ranges::includes(large, small);
}

EventSet set_difference(const EventSet& a, const EventSet& b) {
  assert(std::ranges::is_sorted(a) && std::ranges::is_sorted(b));
  EventSet result;
  std::ranges::set_difference(a, b, std::back_inserter(result));
  return result;
}

EventSet set_union(const EventSet& a, const EventSet& b) {
  assert(std::ranges::is_sorted(a) && std::ranges::is_sorted(b));
  EventSet result;
  std::ranges::set_union(a, b, std::back_inserter(result));
  return result;
}

EventSet symmetric_difference(const EventSet& a, const EventSet& b) {
  assert(std::ranges::is_sorted(a) && std::ranges::is_sorted(b));
  EventSet result;
  std::ranges::set_symmetric_difference(a, b, std::back_inserter(result));
  return result;
}

bool is_causally_closed(const net::StgPrefix& prefix, const EventSet& set) {
  assert(std::ranges::is_sorted(set));
  return std::ranges::all_of(set, [&](StgEventId id) {
    return std::ranges::all_of(
        base::element(prefix.events, id).preset, [&set](const auto* condition) {
          return condition->is_initial() ||
                 std::ranges::binary_search(set, base::id_of(*condition->pre_event));
        });
  });
}

bool is_configuration(const net::StgPrefix& prefix, const EventSet& set) {
  if (!is_causally_closed(prefix, set)) return false;
  base::IndexedBy<net::StgPrefix::Condition, bool> is_consumed(prefix.conditions.size());
  for (const StgEventId id : set) {
    for (const auto* condition : base::element(prefix.events, id).preset) {
      if (is_consumed[*condition]) return false;
      is_consumed[*condition] = true;
    }
  }
  return true;
}

bool has_only_dummies(const net::StgPrefix& prefix, const EventSet& set) {
  return std::ranges::all_of(
      set, [&prefix](StgEventId id) { return net::is_dummy(base::element(prefix.events, id)); });
}

EventSet without_maximal_dummies(const net::StgPrefix& prefix, const EventSet& configuration) {
  assert(is_causally_closed(prefix, configuration));
  Membership inside = membership(prefix, configuration);
  std::vector<const Event*> open;
  for (const StgEventId id : configuration) {
    if (net::is_dummy(base::element(prefix.events, id)))
      open.push_back(&base::element(prefix.events, id));
  }
  while (!open.empty()) {
    const Event& event = *open.back();
    open.pop_back();
    if (!inside[event] || !net::is_dummy(event) || has_successor_in(event, inside)) continue;
    inside[event] = false;
    for (const auto* condition : event.preset) {  // dummies that this one has kept
      if (!condition->is_initial()) open.push_back(condition->pre_event);
    }
  }
  EventSet rest;
  std::ranges::copy_if(configuration, std::back_inserter(rest),
                       [&inside](StgEventId id) { return inside[id]; });
  assert(is_causally_closed(prefix, rest) && "only what nothing needs has gone");
  return rest;
}

}  // namespace vorel::configuration
