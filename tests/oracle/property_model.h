// oracle/property_model.h - what properties of a state can speak of, as plain tables.
// Here:      the facts about the nodes of a process, the states of its net, and the states that its
//            configurations lead to.
// Not here:  properties (oracle/random_property.h).
// A node is named by its number, from 1.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "net/process.h"
#include "oracle/state_graph.h"

namespace vorel::oracle {

enum NodeKind : std::uint8_t { condition, event, place, transition, signal };
using Nodes = std::set<std::int64_t>;

struct NodeFacts {
  std::string name = {};  // of places, transitions and signals
  Nodes pre = {}, post = {};
  std::int64_t origin = 0;  // the place of a condition, transition of an event, signal of those
  bool is_init = false, is_cutoff = false;
  net::Sign sign = net::Sign::toggle;             // of events and transitions
  net::SignalKind kind = net::SignalKind::dummy;  // of signals
};

struct ProcessModel {
  bool has_signals = false;
  std::array<std::vector<NodeFacts>, 5> nodes;  // by kind, then by number - 1

  const NodeFacts& at(NodeKind kind, std::int64_t number) const {
    return nodes[kind].at(static_cast<std::size_t>(number - 1));
  }
  std::int64_t count(NodeKind kind) const { return static_cast<std::int64_t>(nodes[kind].size()); }
};

// One state: what $ and @ say of every node, by kind, then by number - 1.
struct PropertyState {
  std::array<std::vector<bool>, 5> holds, enabled;
  std::uint32_t distance = 0;  // least number of firings to it; of a configuration, its size
};

// The prefix of an STG has initial values.
template <class N>
ProcessModel model_of(const net::PrefixOf<N>& prefix);

// What the states of a net are.
enum class StateKind : std::uint8_t {
  all,         // all reachable ones
  no_dummies,  // those after a run in which no dummy is maximal, that is, some output of each dummy
               // is consumed later; enabled is also what firing dummies alone makes enabled
};

// Every state of the net, explored without a prefix: nothing is said of conditions and events. One
// state may stand there several times.
template <class N>
std::vector<PropertyState> states_of(const N& net, StateKind kind);

// The state after each configuration without cut-offs, by the set of its events; nullopt when
// there are more of them.
using EventNumbers = std::set<std::uint32_t>;
template <class N>
std::optional<std::vector<std::pair<EventNumbers, PropertyState>>> configuration_states(
    const net::PrefixOf<N>& prefix, StateKind kind, std::size_t most);

}  // namespace vorel::oracle
