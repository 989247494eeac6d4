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

}  // namespace

template <net::Process P>
std::optional<std::uint32_t> ProcessIndex<P>::find_place(std::string_view name) {
  return find_in(place_names_, process().places, name);
}

template <net::Process P>
std::optional<std::uint32_t> ProcessIndex<P>::find_transition(std::string_view name) {
  return find_in(transition_names_, process().transitions, name);
}

template <net::Process P>
std::optional<std::uint32_t> ProcessIndex<P>::find_signal(
    std::string_view name) requires P::NetType::has_signals {
  return find_in(signal_names_, process().signals, name);
}

#define INSTANTIATE(P) template class ProcessIndex<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
