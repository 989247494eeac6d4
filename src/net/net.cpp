#include "net/net.h"

#include <algorithm>
#include <tuple>

#include "net/check.h"

namespace vorel::net {
namespace {

template <class T>
void sort_list_by_name(base::OwnedList<T>& list) {
  std::ranges::stable_sort(
      list, [](const auto& a, const auto& b) { return name_less(a->name, b->name); });
  base::renumber(list);
}

template <class T>
void sort_neighbours(base::OwnedList<T>& list) {
  for (const auto& node : list) {
    sort_by_index(node->preset);
    sort_by_index(node->postset);
  }
}

}  // namespace

bool name_less(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

template <class T>
void sort_places(NetOf<T>& net) {
  sort_list_by_name(net.places);
}

template <class T>
void sort_transitions(NetOf<T>& net) {
  sort_list_by_name(net.transitions);
}

template <class T>
void sort_adjacency(NetOf<T>& net) {
  sort_neighbours(net.places);
  sort_neighbours(net.transitions);
}

template <class T>
void sort_net(NetOf<T>& net) {
  sort_places(net);
  sort_transitions(net);
  sort_adjacency(net);
  check_arcs(net);
}

#define INSTANTIATE(T)                          \
  template void sort_places<T>(NetOf<T>&);      \
  template void sort_transitions<T>(NetOf<T>&); \
  template void sort_adjacency<T>(NetOf<T>&);   \
  template void sort_net<T>(NetOf<T>&);
INSTANTIATE(Transition)
INSTANTIATE(StgTransition)
#undef INSTANTIATE

void sort_signals(Stg& stg) {
  std::ranges::stable_sort(stg.signals, [](const auto& a, const auto& b) {
    return a->kind != b->kind ? a->kind < b->kind : name_less(a->name, b->name);
  });
  base::renumber(stg.signals);
  const auto first_above = [&stg](SignalKind kind) {
    const auto above = std::ranges::find_if(
        stg.signals, [kind](const auto& signal) { return signal->kind > kind; });
    return static_cast<std::uint32_t>(above - stg.signals.begin());
  };
  stg.inputs_end = first_above(SignalKind::input);
  stg.outputs_end = first_above(SignalKind::output);
  stg.internals_end = first_above(SignalKind::internal);
  check_signals(stg);
}

Signal& add_signal(Stg& stg, std::string name, SignalKind kind) {
  Signal& signal = base::append_new(stg.signals);
  signal.name = std::move(name);
  signal.kind = kind;
  return signal;
}

}  // namespace vorel::net
