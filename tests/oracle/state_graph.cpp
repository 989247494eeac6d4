#include "oracle/state_graph.h"

#include <cassert>
#include <map>
#include <utility>

namespace vorel::oracle {
namespace {

using Key = std::pair<Marking, Parity>;

template <class N>
class Explorer {
 public:
  Explorer(const N& net, std::size_t max_states) : net_{net}, max_states_{max_states} {}

  StateGraph<N> run() {
    add({initial_marking(net_), initial_parity(net_)}, 0);
    for (std::uint32_t i = 0; i < graph_.states.size(); ++i) {
      if (!expand(i)) return std::move(graph_);
      if (graph_.states.size() > max_states_) {
        graph_.outcome = Exploration::too_large;
        return std::move(graph_);
      }
    }
    return std::move(graph_);
  }

 private:
  std::uint32_t add(const Key& key, std::uint32_t distance) {
    const auto number = static_cast<std::uint32_t>(graph_.states.size());
    const auto [known, is_new] = numbers_.emplace(key, number);
    if (is_new) graph_.states.push_back({key.first, key.second, distance, {}});
    return known->second;
  }

  bool expand(std::uint32_t number) {
    const Marking marking = graph_.states[number].marking;
    const Parity parity = graph_.states[number].parity;
    const std::uint32_t distance = graph_.states[number].distance;
    for (const auto& transition : net_.transitions) {
      if (!is_enabled(marking, *transition)) continue;
      const auto next = fire(marking, *transition);
      if (!next) {
        graph_.outcome = Exploration::unsafe;
        return false;
      }
      Parity next_parity = parity;
      count_edge(next_parity, *transition);
      const std::uint32_t target = add({*next, next_parity}, distance + 1);
      graph_.states[number].arcs.push_back({transition.get(), target});
    }
    return true;
  }

  const N& net_;
  std::size_t max_states_;
  StateGraph<N> graph_;
  std::map<Key, std::uint32_t> numbers_;
};

}  // namespace

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
  return Explorer<N>(net, max_states).run();
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
