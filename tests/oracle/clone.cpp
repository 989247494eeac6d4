#include "oracle/clone.h"

#include <cassert>

namespace vorel::oracle {
namespace {

template <class N>
void copy_arcs(const N& from, N& to) {
  for (const auto& place : from.places) {
    auto& copy = *to.places[place->index];
    for (const auto* t : place->preset) copy.preset.push_back(to.transitions[t->index].get());
    for (const auto* t : place->postset) copy.postset.push_back(to.transitions[t->index].get());
  }
  for (const auto& transition : from.transitions) {
    auto& copy = *to.transitions[transition->index];
    for (const auto* p : transition->preset) copy.preset.push_back(to.places[p->index].get());
    for (const auto* p : transition->postset) copy.postset.push_back(to.places[p->index].get());
  }
}

void copy_labels(const net::Net&, net::Net&) {}

void copy_labels(const net::Stg& from, net::Stg& to) {
  for (const auto& signal : from.signals) {
    net::add_signal(to, signal->name, signal->kind).initial_value = signal->initial_value;
  }
  to.inputs_end = from.inputs_end;
  to.outputs_end = from.outputs_end;
  to.internals_end = from.internals_end;
  for (const auto& transition : from.transitions) {
    net::StgTransition& copy = *to.transitions[transition->index];
    assert(transition->signal != nullptr && transition->signal->index < to.signals.size());
    copy.signal = to.signals[transition->signal->index].get();
    copy.sign = transition->sign;
  }
}

}  // namespace

template <class N>
N clone(const N& net) {
  N copy;
  for (const auto& place : net.places) {
    auto& new_place = base::append_new(copy.places);
    new_place.name = place->name;
    new_place.initial_marking = place->initial_marking;
  }
  for (const auto& transition : net.transitions) {
    base::append_new(copy.transitions).name = transition->name;
  }
  assert(copy.places.size() == net.places.size());
  copy_arcs(net, copy);
  copy_labels(net, copy);
  return copy;
}

template net::Net clone(const net::Net&);
template net::Stg clone(const net::Stg&);

}  // namespace vorel::oracle
