#include "net/clone_net.h"

#include <cassert>
#include <vector>

#include "net/check.h"

namespace vorel::net {
namespace {

// The links of one element, led to the elements of the same numbers in the list of the copy.
template <class T>
void clone_links(const base::PtrList<T>& links, const base::OwnedList<T>& list,
                 base::PtrList<T>& copy) {
  copy.reserve(links.size());
  for (const T* element : links) copy.push_back(list[element->index].get());
}

template <class From, class To>
void clone_all_links(const base::OwnedList<From>& elements, const base::OwnedList<To>& list,
                     base::OwnedList<From>& copies) {
  for (const auto& element : elements) {
    From& copy = *copies[element->index];
    clone_links(element->preset, list, copy.preset);
    clone_links(element->postset, list, copy.postset);
  }
}

void clone_labels(const Net&, Net&) {}

void clone_labels(const Stg& stg, Stg& copy) {
  copy.signals.reserve(stg.signals.size());
  for (const auto& signal : stg.signals) {
    add_signal(copy, signal->name, signal->kind).initial_value = signal->initial_value;
  }
  copy.inputs_end = stg.inputs_end;
  copy.outputs_end = stg.outputs_end;
  copy.internals_end = stg.internals_end;
  for (const auto& transition : stg.transitions) {
    assert(transition->signal != nullptr && "every transition is labelled");
    StgTransition& labelled = *copy.transitions[transition->index];
    labelled.signal = copy.signals[transition->signal->index].get();
    labelled.sign = transition->sign;
  }
}

template <class N>
void clone_into(const N& net, N& copy) {
  copy.places.reserve(net.places.size());
  for (const auto& place : net.places) {
    auto& new_place = base::append_new(copy.places);
    assert(new_place.index == place->index);
    new_place.name = place->name;
    new_place.initial_marking = place->initial_marking;
  }
  copy.transitions.reserve(net.transitions.size());
  for (const auto& transition : net.transitions) {
    base::append_new(copy.transitions).name = transition->name;
  }
  clone_all_links(net.places, copy.transitions, copy.places);
  clone_all_links(net.transitions, copy.places, copy.transitions);
  clone_labels(net, copy);
}

using Event = StgPrefix::Event;

void clone_cut_off(const Event& event, StgPrefix& copy) {
  Event& cloned = *copy.events[event.index];
  if (!event.is_cut_off()) return;
  if (event.cut_off.is_unknown()) {
    cloned.mark_cut_off();
    return;
  }
  std::vector<Event*> correspondents;
  for (const Event* other : event.cut_off.correspondents())
    correspondents.push_back(copy.events[other->index].get());
  cloned.cut_off.set_correspondents(correspondents);
}

}  // namespace

template <class N>
N clone_net(const N& net) {
  N copy;
  clone_into(net, copy);
  check(copy);
  return copy;
}

StgPrefix clone_prefix(const StgPrefix& prefix) {
  StgPrefix copy;
  clone_into<Stg>(prefix, copy);
  for (const auto& condition : prefix.conditions)
    base::append_new(copy.conditions).place = copy.places[condition->place->index].get();
  for (const auto& event : prefix.events)
    base::append_new(copy.events).transition = copy.transitions[event->transition->index].get();
  for (const auto& event : prefix.events) {
    Event& cloned = *copy.events[event->index];
    clone_cut_off(*event, copy);
    clone_links(event->preset, copy.conditions, cloned.preset);
    cloned.postset.reserve(event->postset.size());
    for (const auto* condition : event->postset) {
      auto& produced = condition->index == base::no_index ? base::append_new(copy.conditions)
                                                          : *copy.conditions[condition->index];
      produced.place = copy.places[condition->place->index].get();
      produced.pre_event = &cloned;
      cloned.postset.push_back(&produced);
    }
  }
  for (const auto& condition : prefix.conditions)
    clone_links(condition->postset, copy.events, copy.conditions[condition->index]->postset);
  check(copy);
  return copy;
}

template Net clone_net<Net>(const Net&);
template Stg clone_net<Stg>(const Stg&);

}  // namespace vorel::net
