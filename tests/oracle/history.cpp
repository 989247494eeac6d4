#include "oracle/history.h"

#include <cassert>

namespace vorel::oracle {
namespace {

template <class N>
bool index_less(const net::EventOf<N>* a, const net::EventOf<N>* b) {
  return a->index < b->index;
}

template <class N>
void add_with_causes(const net::EventOf<N>* event, EventSet<N>& events) {
  if (event == nullptr || !events.insert(event).second) return;
  for (const auto* condition : event->preset) add_with_causes(condition->pre_event, events);
}

template <class N>
std::set<const net::ConditionOf<N>*> consumed_by(const EventSet<N>& events) {
  std::set<const net::ConditionOf<N>*> consumed;
  for (const auto* event : events) consumed.insert(event->preset.begin(), event->preset.end());
  return consumed;
}

}  // namespace

template <class N>
EventSet<N> causes_of(ConditionSpan<N> conditions) {
  EventSet<N> events(index_less<N>);
  for (const auto* condition : conditions) add_with_causes<N>(condition->pre_event, events);
  return events;
}

template <class N>
EventSet<N> local_configuration(const net::EventOf<N>& event) {
  EventSet<N> events(index_less<N>);
  add_with_causes(&event, events);
  return events;
}

template <class N>
bool is_conflict_free(const EventSet<N>& events) {
  std::size_t preset_sizes = 0;
  for (const auto* event : events) preset_sizes += event->preset.size();
  return consumed_by<N>(events).size() == preset_sizes;
}

template <class N>
bool is_co_set(ConditionSpan<N> conditions) {
  const EventSet<N> causes = causes_of<N>(conditions);
  if (!is_conflict_free<N>(causes)) return false;
  const auto consumed = consumed_by<N>(causes);
  for (const auto* condition : conditions) {
    if (consumed.contains(condition)) return false;
  }
  return true;
}

template <class N>
std::optional<FinalState> final_state(const net::PrefixOf<N>& prefix,
                                      const EventSet<N>& configuration) {
  assert(is_conflict_free<N>(configuration));
  FinalState state{Marking(prefix.places.size()), initial_parity<N>(prefix)};
  std::set<const net::ConditionOf<N>*> produced;
  for (const auto& condition : prefix.conditions) {
    if (condition->is_initial()) produced.insert(condition.get());
  }
  for (const auto* event : configuration) {
    produced.insert(event->postset.begin(), event->postset.end());
    count_edge(state.parity, *event->transition);
  }
  const auto consumed = consumed_by<N>(configuration);
  for (const auto* condition : produced) {
    if (consumed.contains(condition)) continue;
    if (state.marking[condition->place->index]) return std::nullopt;
    state.marking[condition->place->index] = true;
  }
  return state;
}

#define INSTANTIATE(N)                                              \
  template EventSet<N> causes_of<N>(ConditionSpan<N>);              \
  template EventSet<N> local_configuration(const net::EventOf<N>&); \
  template bool is_conflict_free<N>(const EventSet<N>&);            \
  template bool is_co_set<N>(ConditionSpan<N>);                     \
  template std::optional<FinalState> final_state(const net::PrefixOf<N>&, const EventSet<N>&);
INSTANTIATE(net::Net)
INSTANTIATE(net::Stg)
#undef INSTANTIATE

}  // namespace vorel::oracle
