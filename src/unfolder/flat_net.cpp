#include "unfolder/flat_net.h"

#include <algorithm>

namespace vorel::unfolder {
namespace {

// A well-mixed word for each number (the finaliser of splitmix64).
std::uint64_t random_word(std::uint64_t number) {
  std::uint64_t z = (number + 1) * 0x9E3779B97F4A7C15u;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

template <class List>
std::vector<std::uint32_t> numbers_of(const List& list) {
  std::vector<std::uint32_t> numbers;
  for (const auto* element : list) numbers.push_back(element->index);
  return numbers;
}

StateHash hash_of_firing(const FlatNet& net, TransitionId t) {
  StateHash hash;
  for (const PlaceId p : net.preset[t]) hash.tokens -= random_word(p);
  for (const PlaceId p : net.postset[t]) hash.tokens += random_word(p);
  if (net.signal[t] != base::no_index)
    hash.parity = random_word(std::uint64_t{1} << 40 | net.signal[t]);
  return hash;
}

}  // namespace

template <class N>
FlatNet flatten(const N& net) {
  FlatNet flat;
  flat.place_count = static_cast<std::uint32_t>(net.places.size());
  flat.transition_count = static_cast<std::uint32_t>(net.transitions.size());
  for (const auto& place : net.places) {
    flat.consumers.append_list(numbers_of(place->postset));
    if (place->initial_marking != 0) flat.marked.push_back(place->index);
  }
  flat.signal.assign(flat.transition_count, base::no_index);
  flat.is_dummy.assign(flat.transition_count, 0);
  for (const auto& transition : net.transitions) {
    assert(transition->index == flat.firing_hash.size() && "transitions are numbered");
    assert(std::ranges::is_sorted(numbers_of(transition->preset)) && "arcs are sorted");
    flat.preset.append_list(numbers_of(transition->preset));
    flat.postset.append_list(numbers_of(transition->postset));
    if constexpr (N::has_signals) {
      flat.is_dummy[transition->index] = transition->signal->is_dummy();
      if (!transition->signal->is_dummy())
        flat.signal[transition->index] = transition->signal->index;
    }
    flat.firing_hash.push_back(hash_of_firing(flat, transition->index));
  }
  if constexpr (N::has_signals) flat.signal_count = static_cast<std::uint32_t>(net.signals.size());
  return flat;
}

template FlatNet flatten<net::Net>(const net::Net&);
template FlatNet flatten<net::Stg>(const net::Stg&);

}  // namespace vorel::unfolder
