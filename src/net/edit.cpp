#include "net/edit.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <vector>

#include "base/unique_names.h"
#include "net/causality.h"
#include "net/check.h"

namespace vorel::net {
namespace {

using Condition = StgPrefix::Condition;
using Event = StgPrefix::Event;

template <class T>
void erase_one(base::PtrList<T>& list, const T* element) {
  T** const found = std::find(list.begin(), list.end(), element);
  assert(found != list.end() && "what is removed is there");
  list.erase(found, found + 1);
}

// Where each element of a list was, for after it has been sorted.
template <class Element>
std::vector<const Element*> positions(const base::OwnedList<Element>& list) {
  std::vector<const Element*> before;
  before.reserve(list.size());
  for (const auto& element : list) {
    before.push_back(element->index == base::no_index ? nullptr : element.get());
  }
  return before;
}

template <class Element>
NewNumbers<Element> numbers_now(const std::vector<const Element*>& before) {
  NewNumbers<Element> numbers(before.size());
  for (std::uint32_t i = 0; i < before.size(); ++i) {
    if (before[i] != nullptr) numbers.at(i) = base::id_of(*before[i]);
  }
  return numbers;
}

template <class Element>
void drop_removed(base::OwnedList<Element>& list) {
  std::erase_if(list, [](const auto& element) { return element->index == base::no_index; });
}

void number_events_causally(StgPrefix& prefix) {
  const std::vector<Event*> order = topological_order(prefix);
  assert(order.size() == prefix.events.size() && "no event causes itself");
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i]->index = i;
  std::ranges::sort(prefix.events, {}, [](const auto& event) { return event->index; });
}

void number_conditions(StgPrefix& prefix) {
  std::ranges::stable_sort(prefix.conditions, {}, [](const auto& condition) {
    return std::tuple(condition->is_initial() ? 0 : condition->pre_event->index + 1,
                      condition->place->index);
  });
  base::renumber(prefix.conditions);
}

}  // namespace

std::string unique_node_name(const Stg& stg, std::string_view name) {
  base::UniqueNames names;
  for (const auto& place : stg.places) names.add(place->name);
  for (const auto& transition : stg.transitions) names.add(transition->name);
  return names.take(name, "/");
}

Signal& insert_signal(Stg& stg, std::string_view base_name, SignalKind kind,
                      std::uint8_t initial_value) {
  base::UniqueNames names;
  for (const auto& signal : stg.signals) names.add(signal->name);
  Signal& signal = add_signal(stg, names.take(base_name), kind);
  signal.initial_value = initial_value;
  sort_signals(stg);
  return signal;
}

StgPlace& add_place(StgPrefix& prefix, std::string_view name, bool marked) {
  std::string unique = unique_node_name(prefix, name);
  StgPlace& place = base::append_new(prefix.places);
  place.name = std::move(unique);
  place.initial_marking = marked ? 1 : 0;
  if (marked) add_condition(prefix, place);
  return place;
}

StgTransition& add_transition(StgPrefix& prefix, Signal& signal, Sign sign) {
  std::string name = signal.name;
  if (!signal.is_dummy()) name += std::string_view("+-~")[static_cast<std::size_t>(sign)];
  name = unique_node_name(prefix, name);
  StgTransition& transition = base::append_new(prefix.transitions);
  transition.name = std::move(name);
  transition.signal = &signal;
  transition.sign = signal.is_dummy() ? Sign::toggle : sign;
  return transition;
}

Condition& add_condition(StgPrefix& prefix, StgPlace& place) {
  Condition& condition = base::append_new(prefix.conditions);
  condition.place = &place;
  return condition;
}

Event& add_event(StgPrefix& prefix, StgTransition& transition) {
  Event& event = base::append_new(prefix.events);
  event.transition = &transition;
  return event;
}

void remove_link(Condition& condition, Event& event) {
  erase_one(condition.postset, &event);
  erase_one(event.preset, &condition);
}

void remove_link(Event& event, Condition& condition) {
  assert(condition.pre_event == &event);
  condition.pre_event = nullptr;
  erase_one(event.postset, &condition);
}

void remove_arc(StgPrefix& prefix, StgPlace& place, StgTransition& transition) {
  erase_one(place.postset, &transition);
  erase_one(transition.preset, &place);
  for (const auto& event : prefix.events) {
    if (event->transition != &transition) continue;
    const auto consumed = std::ranges::find(event->preset, &place, &Condition::place);
    if (consumed != event->preset.end()) remove_link(**consumed, *event);
  }
}

void remove_arc(StgPrefix& prefix, StgTransition& transition, StgPlace& place) {
  erase_one(place.preset, &transition);
  erase_one(transition.postset, &place);
  for (const auto& event : prefix.events) {
    if (event->transition != &transition) continue;
    const auto produced = std::ranges::find(event->postset, &place, &Condition::place);
    if (produced != event->postset.end()) remove_link(*event, **produced);
  }
}

void remove_condition(Condition& condition) {
  while (!condition.postset.empty()) remove_link(condition, *condition.postset.back());
  if (!condition.is_initial()) remove_link(*condition.pre_event, condition);
  condition.index = base::no_index;
}

void remove_places(StgPrefix& prefix, std::span<StgPlace* const> places) {
  base::MarkSet<StgPlace> is_removed(prefix.places.size());
  for (const StgPlace* place : places) is_removed.insert(*place);
  for (const auto& event : prefix.events) {  // also what cut-offs left out of the list
    const std::vector<Condition*> produced(event->postset.begin(), event->postset.end());
    for (Condition* condition : produced) {
      if (is_removed.contains(*condition->place)) remove_condition(*condition);
    }
  }
  for (const auto& condition : prefix.conditions) {
    const bool is_left = condition->index != base::no_index;
    if (is_left && is_removed.contains(*condition->place)) remove_condition(*condition);
  }
  for (StgPlace* place : places) {
    for (StgTransition* consumer : place->postset) erase_one(consumer->preset, place);
    for (StgTransition* producer : place->preset) erase_one(producer->postset, place);
    place->preset.clear();
    place->postset.clear();
    place->index = base::no_index;
  }
}

Renumbering finish_edit(StgPrefix& prefix) {
  const auto places = positions(prefix.places);
  const auto transitions = positions(prefix.transitions);
  const auto conditions = positions(prefix.conditions);
  const auto events = positions(prefix.events);
  drop_removed(prefix.places);
  drop_removed(prefix.conditions);
  sort_net(static_cast<NetOf<StgTransition>&>(prefix));
  number_events_causally(prefix);
  number_conditions(prefix);
  sort_links(prefix);
  check(prefix);
  return {numbers_now(places), numbers_now(transitions), numbers_now(conditions),
          numbers_now(events)};
}

}  // namespace vorel::net
