#include "net/clone_net.h"

#include <cassert>

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

}  // namespace

template <class N>
N clone_net(const N& net) {
  N copy;
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
  check(copy);
  return copy;
}

template Net clone_net<Net>(const Net&);
template Stg clone_net<Stg>(const Stg&);

}  // namespace vorel::net
