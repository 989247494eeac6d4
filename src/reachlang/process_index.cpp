#include "reachlang/process_index.h"

namespace vorel::reachlang {
namespace {

// Of two elements of one name, the first.
template <class List, class Names>
std::optional<std::uint32_t> find_in(Names& names, const List& list, std::string_view name) {
  if (names.empty()) {
    for (const auto& element : list) names.emplace(element->name, element->index);
  }
  const auto found = names.find(name);
  if (found == names.end()) return {};
  return found->second;
}

template <class List, class KeyOf>
base::Grouping grouped(std::size_t groups, const List& list, KeyOf key_of) {
  return base::Grouping(groups, static_cast<std::uint32_t>(list.size()),
                        [&](std::uint32_t i) { return key_of(*list[i])->index; });
}

}  // namespace

template <net::Process P>
auto ProcessIndex<P>::conditions_of(std::uint32_t place) -> Indices {
  if (conditions_.empty()) {
    conditions_ = grouped(process_.places.size(), process_.conditions,
                          [](const auto& condition) { return condition.place; });
  }
  return conditions_[place];
}

template <net::Process P>
auto ProcessIndex<P>::events_of(std::uint32_t transition) -> Indices {
  if (events_.empty()) {
    events_ = grouped(process_.transitions.size(), process_.events,
                      [](const auto& event) { return event.transition; });
  }
  return events_[transition];
}

template <net::Process P>
auto ProcessIndex<P>::transitions_of(std::uint32_t signal)
    -> Indices requires P::NetType::has_signals {
  if (transitions_.empty()) {
    transitions_ = grouped(process_.signals.size(), process_.transitions,
                           [](const auto& transition) { return transition.signal; });
  }
  return transitions_[signal];
}

template <net::Process P>
std::optional<std::uint32_t> ProcessIndex<P>::find_place(std::string_view name) {
  return find_in(place_names_, process_.places, name);
}

template <net::Process P>
std::optional<std::uint32_t> ProcessIndex<P>::find_transition(std::string_view name) {
  return find_in(transition_names_, process_.transitions, name);
}

template <net::Process P>
std::optional<std::uint32_t> ProcessIndex<P>::find_signal(
    std::string_view name) requires P::NetType::has_signals {
  return find_in(signal_names_, process_.signals, name);
}

#define INSTANTIATE(P) template class ProcessIndex<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
