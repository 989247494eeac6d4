// configuration/acyclicity.h - keeps causal cycles out of the configurations of a merged process.
// Here:      the clauses that exclude cycles, all at once or after a model that has one.
// Not here:  the graph (configuration/causal_graph.h), the other rules of a configuration
//            (configuration/configuration_encoding.h).
//
// A set of mp-events in which every condition has its producer can consist of events that wait for
// each other in a circle [KKKV-2006]. Only strongly connected components of the causal graph can
// hold a circle. All those through one node of a component, its root, are excluded by a walk: what
// events of the configuration reach from the root is marked by a literal, which may not come back
// to the root. Then the root is taken out and what is left falls apart into smaller components.
//
// The roots are conditions (or turns) with many neighbours. A walk for every event that is the
// lowest of a cycle, through the component above it, would take a hundred times as many clauses on
// a component of 600 events, and the factor grows with the component.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "configuration/causal_graph.h"
#include "configuration/configuration_vars.h"

namespace vorel::configuration {

template <net::Process P>
class Acyclicity {
 public:
  using Event = typename P::Event;

  // Prepares the graph and its components; adds no clause. Keeps a reference to the encoded
  // configuration. The clauses are permanent.
  explicit Acyclicity(ConfigurationVars<P>& vars);

  // Excludes the cycles of all components, in time and clauses nearly linear in their arcs: where
  // that is too few for the walks of a large component, the rest is left to refine().
  void encode_all_components();

  // Whether the configuration has a cycle. If so, the cycles through one node of each component
  // where that is so are excluded; the formula must be solved again. After at most as many rounds
  // as there are conditions and turns no cycle is left.
  bool refine(std::span<const Event* const> events);

 private:
  using Nodes = std::vector<std::uint32_t>;
  static constexpr std::uint32_t no_part = base::no_index;

  void add_part(Nodes nodes);
  void encode_component(std::uint32_t part);
  std::vector<Nodes> cycles_among(std::span<const Event* const> events);
  std::uint32_t best_root(std::span<const std::uint32_t> candidates) const;
  void exclude_cycles_through(std::uint32_t root);
  void split_at(std::uint32_t root);
  void forbid_return(std::uint32_t event, std::uint32_t root);
  void collect_neighbours(std::uint32_t event, std::uint32_t root);
  sat::Lit reached(std::uint32_t node);

  ConfigurationVars<P>& vars_;
  const CausalGraph graph_;
  ComponentFinder finder_;
  std::vector<Nodes> parts_;            // strongly connected, roots of the past taken out
  std::vector<std::uint32_t> part_of_;  // by node; no_part if it is on no cycle that is left
  std::uint64_t arcs_ = 0;              // of all components
  std::uint64_t walked_arcs_ = 0;

  std::vector<std::uint32_t> in_model_;  // by node, scratch: its part if it is there, or no_part
  std::vector<sat::Lit> reached_;        // by node: from the root in hand, along the configuration
  Nodes before_, after_;                 // scratch: neighbours of an event in its part
};

}  // namespace vorel::configuration
