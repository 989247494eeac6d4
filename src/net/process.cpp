#include "net/process.h"

#include <algorithm>

namespace vorel::net {
namespace {

template <Process P>
std::uint32_t initial_tokens(const typename P::Condition& condition) {
  if constexpr (P::is_merged) {
    return condition.initial_marking;
  } else {
    return condition.is_initial() ? 1 : 0;
  }
}

}  // namespace

template <Process P>
void sort_links(P& process) {
  for (const auto& condition : process.conditions) {
    if constexpr (P::is_merged) sort_by_index(condition->preset);
    sort_by_index(condition->postset);
  }
  for (const auto& event : process.events) {
    sort_by_index(event->preset);
    sort_by_index(event->postset);
  }
}

template <Process P>
void rebuild_arcs(P& process) {
  for (const bool from_cut_offs : {false, true}) {
    for (const auto& event : process.events) {
      auto& transition = *event->transition;
      if (event->is_cut_off() != from_cut_offs) continue;
      if (!transition.preset.empty() || !transition.postset.empty()) continue;
      for (const auto* condition : event->preset) add_arc(*condition->place, transition);
      for (const auto* condition : event->postset) add_arc(transition, *condition->place);
    }
  }
}

template <Process P>
void count_initial_marking(P& process) {
  for (const auto& condition : process.conditions) {
    condition->place->initial_marking += initial_tokens<P>(*condition);
  }
}

template <Process P>
void print_statistics(const P& process, std::ostream& stream) {
  std::uint64_t cut_offs = 0, left_out = 0, consumed = 0, produced = 0;
  for (const auto& event : process.events) {
    consumed += event->preset.size();
    produced += event->postset.size();
    if (!event->is_cut_off()) continue;
    ++cut_offs;
    left_out += static_cast<std::uint64_t>(std::ranges::count_if(
        event->postset, [](const auto* condition) { return condition->index == base::no_index; }));
  }
  stream << "\n |B|=" << process.conditions.size() + left_out << " |E|=" << process.events.size()
         << " |C|=" << cut_offs << " |BE|=" << consumed << " |EB|=" << produced + left_out
         << std::flush;
}

#define INSTANTIATE(P)                        \
  template void sort_links<P>(P&);            \
  template void rebuild_arcs<P>(P&);          \
  template void count_initial_marking<P>(P&); \
  template void print_statistics<P>(const P&, std::ostream&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::net
