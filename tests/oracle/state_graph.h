// oracle/state_graph.h - all reachable states of a small safe net, one by one.
// Here:      exploring a net from its initial marking, deadlocks, distances, replaying traces.
// Not here:  codes of an STG and what follows from them (oracle/coding.h).
//
// A net and an STG differ in what a state is: the marking, or the marking and the parity of each
// signal's edges so far. A process is explored through its net: explore<Net>(prefix).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "net/net.h"

namespace vorel::oracle {

using Marking = std::vector<bool>;  // by place index
using Parity = std::vector<bool>;   // by signal index, dummies stay false; empty for a plain net

template <class N>
Marking initial_marking(const N& net);

template <class T>
bool is_enabled(const Marking& marking, const T& transition);

// Nullopt when a place would hold two tokens. The transition must be enabled.
template <class T>
std::optional<Marking> fire(Marking marking, const T& transition);

// Flips the signal of the transition; nothing to do for a dummy or in a plain net.
void count_edge(Parity& parity, const net::Transition& transition);
void count_edge(Parity& parity, const net::StgTransition& transition);

template <class N>
Parity initial_parity(const N& net);

enum class Exploration { complete, unsafe, too_large };

template <class N>
struct StateGraph {
  struct Arc {
    const typename N::Transition* transition;
    std::uint32_t target;
  };
  struct State {
    Marking marking;
    Parity parity;
    std::uint32_t distance = 0;  // least number of firings from the initial state
    std::vector<Arc> arcs;       // by transition index

    bool is_deadlock() const { return arcs.empty(); }
  };

  Exploration outcome = Exploration::complete;
  std::vector<State> states;  // breadth first, the initial state at 0

  std::set<Marking> deadlocks() const;
  bool has_deadlock() const { return !deadlocks().empty(); }
  std::optional<std::uint32_t> shortest_deadlock() const;  // number of firings to it
};

// Stops at the first firing that shows unsafeness, and when there are more states than allowed;
// `outcome` tells which, and only a complete graph answers anything.
template <class N>
StateGraph<N> explore(const N& net, std::size_t max_states = 100'000);

// The marking after firing the transitions of these names in this order; nullopt when one is not
// known, not enabled, or makes the net unsafe.
template <class N>
std::optional<Marking> replay(const N& net, std::span<const std::string> names);

template <class N>
bool is_dead(const N& net, const Marking& marking);

}  // namespace vorel::oracle
