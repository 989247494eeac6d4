#include "oracle/state_graph.h"

#include <cassert>
#include <map>
#include <utility>

namespace vorel::oracle {

template <class N>
Marking initial_marking(const N& net) {
  Marking marking(net.places.size());
  for (const auto& place : net.places) {
    assert(place->initial_marking <= 1 && "the oracle knows safe nets only");
    marking[place->index] = place->initial_marking != 0;
  }
  return marking;
}

template <class T>
bool is_enabled(const Marking& marking, const T& transition) {
  for (const auto* place : transition.preset) {
    if (!marking[place->index]) return false;
  }
  return true;
}

template <class T>
std::optional<Marking> fire(Marking marking, const T& transition) {
  assert(is_enabled(marking, transition));
  for (const auto* place : transition.preset) marking[place->index] = false;
  for (const auto* place : transition.postset) {
    if (marking[place->index]) return std::nullopt;
    marking[place->index] = true;
  }
  return marking;
}

void count_edge(Parity&, const net::Transition&) {}

void count_edge(Parity& parity, const net::StgTransition& transition) {
  assert(transition.signal != nullptr);
  if (!transition.signal->is_dummy()) parity[transition.signal->index].flip();
}

template <class N>
Parity initial_parity(const N& net) {
  if constexpr (N::has_signals) {
    return Parity(net.signals.size());
  } else {
    return {};
  }
}

template <class N>
std::set<Marking> StateGraph<N>::deadlocks() const {
  std::set<Marking> markings;
  for (const State& state : states) {
    if (state.is_deadlock()) markings.insert(state.marking);
  }
  return markings;
}

template <class N>
std::optional<std::uint32_t> StateGraph<N>::shortest_deadlock() const {
  // Breadth first: the first deadlock is a nearest one.
  for (const State& state : states) {
    if (state.is_deadlock()) return state.distance;
  }
  return std::nullopt;
}

template <class N>
StateGraph<N> explore(const N& net, std::size_t max_states) {
  StateGraph<N> graph;
  std::map<std::pair<Marking, Parity>, std::uint32_t> numbers;
  const auto add = [&](const Marking& marking, const Parity& parity, std::uint32_t distance) {
    const auto next = static_cast<std::uint32_t>(graph.states.size());
    const auto [known, is_new] = numbers.emplace(std::pair(marking, parity), next);
    if (is_new) graph.states.push_back({marking, parity, distance, {}});
    return known->second;
  };
  add(initial_marking(net), initial_parity(net), 0);
  for (std::uint32_t i = 0; i < graph.states.size(); ++i) {
    if (graph.states.size() > max_states) graph.outcome = Exploration::too_large;
    if (graph.outcome != Exploration::complete) break;
    const auto [marking, parity, distance, no_arcs] = graph.states[i];
    for (const auto& transition : net.transitions) {
      if (!is_enabled(marking, *transition)) continue;
      const auto next = fire(marking, *transition);
      if (!next) {
        graph.outcome = Exploration::unsafe;
        break;
      }
      Parity next_parity = parity;
      count_edge(next_parity, *transition);
      const std::uint32_t target = add(*next, next_parity, distance + 1);
      graph.states[i].arcs.push_back({transition.get(), target});
    }
  }
  return graph;
}

template <class N>
std::optional<Marking> replay(const N& net, std::span<const std::string> names) {
  std::optional<Marking> marking = initial_marking(net);
  for (const std::string& name : names) {
    const typename N::Transition* found = nullptr;
    for (const auto& transition : net.transitions) {
      if (transition->name == name) found = transition.get();
    }
    if (found == nullptr || !is_enabled(*marking, *found)) return std::nullopt;
    marking = fire(*marking, *found);
    if (!marking) return std::nullopt;
  }
  return marking;
}

template <class N>
bool is_dead(const N& net, const Marking& marking) {
  for (const auto& transition : net.transitions) {
    if (is_enabled(marking, *transition)) return false;
  }
  return true;
}

#define INSTANTIATE(N)                                                            \
  template Marking initial_marking(const N&);                                     \
  template bool is_enabled(const Marking&, const N::Transition&);                 \
  template std::optional<Marking> fire(Marking, const N::Transition&);            \
  template Parity initial_parity(const N&);                                       \
  template struct StateGraph<N>;                                                  \
  template StateGraph<N> explore(const N&, std::size_t);                          \
  template std::optional<Marking> replay(const N&, std::span<const std::string>); \
  template bool is_dead(const N&, const Marking&);
INSTANTIATE(net::Net)
INSTANTIATE(net::Stg)
#undef INSTANTIATE

}  // namespace vorel::oracle
