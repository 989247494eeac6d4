// configuration/causal_graph.h - what must happen before what in a run of a merged process.
// Here:      the graph of mp-events, mp-conditions and turns.
// Not here:  keeping its cycles out of configurations (configuration/acyclicity.h).
#pragma once

#include <cstdint>
#include <vector>

#include "configuration/digraph.h"
#include "net/process.h"

namespace vorel::configuration {

// The mp-conditions sorted by place and occurrence depth.
template <net::Process P>
std::vector<const typename P::Condition*> conditions_by_depth(const P& process);

// Nodes: the events by number (cut-offs have no arcs), then the conditions, then the turns. Arcs
// lead from an event to what it produces, and from a condition to those who consume it.
//
// A turn stands between two conditions of one place at neighbouring depths: arcs lead to it from
// the consumers of the first, and from it to the producers of the second. In a run of a safe net a
// place must be left before it is entered again, and whoever does both at once (and has no arcs
// with the turn) is the only one who does either. Without turns, a set of events without a cycle
// may pass through the depths of a place in another order, 1, 3, 2 say: it can fire in the net, yet
// it is no configuration of the merged process.
//
// Each event lies between nodes of the two other kinds, so every cycle passes through one of those.
struct CausalGraph {
  template <net::Process P>
  static CausalGraph of(const P& process);

  bool is_event(std::uint32_t node) const { return node < event_count; }

  std::uint32_t event_count;
  Digraph forward, backward;
};

}  // namespace vorel::configuration
