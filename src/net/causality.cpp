#include "net/causality.h"

#include <algorithm>

#include "base/indexed_by.h"

namespace vorel::net {
namespace {

// True when the producers of each event's preset stand before it.
template <class N>
bool is_numbered_causally(const PrefixOf<N>& prefix) {
  return std::ranges::all_of(prefix.events, [](const auto& event) {
    return std::ranges::all_of(event->preset, [&event](const auto* condition) {
      return condition->is_initial() || condition->pre_event->index < event->index;
    });
  });
}

// Kahn's algorithm over the links.
template <class N>
std::vector<EventOf<N>*> sort_causally(const PrefixOf<N>& prefix) {
  std::vector<EventOf<N>*> order;
  order.reserve(prefix.events.size());
  base::IndexedBy<EventOf<N>, std::uint32_t> waiting_for(prefix.events.size());
  for (const auto& event : prefix.events) {
    waiting_for[*event] = static_cast<std::uint32_t>(std::ranges::count_if(
        event->preset, [](const auto* condition) { return !condition->is_initial(); }));
    if (waiting_for[*event] == 0) order.push_back(event.get());
  }
  for (std::size_t next = 0; next < order.size(); ++next) {
    for (const auto* condition : order[next]->postset) {
      for (auto* consumer : condition->postset) {
        if (--waiting_for[*consumer] == 0) order.push_back(consumer);
      }
    }
  }
  return order;
}

}  // namespace

template <class N>
std::vector<EventOf<N>*> topological_order(const PrefixOf<N>& prefix) {
  if (!is_numbered_causally(prefix)) return sort_causally(prefix);
  std::vector<EventOf<N>*> order;
  order.reserve(prefix.events.size());
  for (const auto& event : prefix.events) order.push_back(event.get());
  return order;
}

template <class N>
std::vector<EventOf<N>*> causal_past(const PrefixOf<N>& prefix,
                                     std::type_identity_t<std::span<EventOf<N>* const>> events) {
  base::MarkSet<EventOf<N>> seen(prefix.events.size());
  std::vector<EventOf<N>*> past;
  const auto visit = [&seen, &past](EventOf<N>* event) {
    if (seen.insert(*event)) past.push_back(event);
  };
  std::ranges::for_each(events, visit);
  for (std::size_t next = 0; next < past.size(); ++next) {
    for (const auto* condition : past[next]->preset) {
      if (!condition->is_initial()) visit(condition->pre_event);
    }
  }
  if (past.size() < prefix.events.size() / 16) {
    std::ranges::sort(past, {}, &EventOf<N>::index);
    return past;
  }
  // Looking at all is faster than sorting so many.
  const std::size_t size = past.size();
  past.clear();
  for (std::uint32_t i = 0; past.size() < size; ++i) {
    if (seen.contains(base::Id<EventOf<N>>{i})) past.push_back(prefix.events[i].get());
  }
  return past;
}

#define INSTANTIATE(N)                                                        \
  template std::vector<EventOf<N>*> topological_order<N>(const PrefixOf<N>&); \
  template std::vector<EventOf<N>*> causal_past<N>(const PrefixOf<N>&,        \
                                                   std::span<EventOf<N>* const>);
INSTANTIATE(Net)
INSTANTIATE(Stg)
#undef INSTANTIATE

}  // namespace vorel::net
