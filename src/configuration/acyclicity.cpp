#include "configuration/acyclicity.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <numeric>

#include "base/messages.h"
#include "base/run_state.h"

namespace vorel::configuration {
namespace {

// How much of the graph is walked before the rest is left to refinement.
constexpr std::uint64_t walks_per_arc = 32;
constexpr std::uint64_t always_walked = 200'000;

}  // namespace

template <net::Process P>
Acyclicity<P>::Acyclicity(ConfigurationVars<P>& vars)
    : vars_{vars},
      graph_{CausalGraph::of(vars.process())},
      finder_{graph_.forward},
      part_of_(graph_.forward.node_count(), 0),
      in_model_(part_of_.size(), no_part),
      reached_(part_of_.size()) {
  Nodes all(part_of_.size());
  std::iota(all.begin(), all.end(), 0u);
  std::vector<Nodes> components;
  finder_.run(all, part_of_, [&components](std::span<const std::uint32_t> component) {
    components.emplace_back(component.begin(), component.end());
  });
  std::ranges::fill(part_of_, no_part);
  for (Nodes& component : components) {
    add_part(std::move(component));
    for (const std::uint32_t node : parts_.back()) arcs_ += graph_.forward.successors(node).size();
  }
}

template <net::Process P>
void Acyclicity<P>::add_part(Nodes nodes) {
  assert(nodes.size() > 1 && "a node alone is on no cycle");
  for (const std::uint32_t node : nodes) part_of_[node] = static_cast<std::uint32_t>(parts_.size());
  parts_.push_back(std::move(nodes));
}

template <net::Process P>
void Acyclicity<P>::encode_all_components() {
  const auto count = static_cast<std::uint32_t>(parts_.size());
  for (std::uint32_t part = 0; part < count; ++part) {
    if (base::verbosity() >= 3) {
      const auto events = std::ranges::count_if(
          parts_[part], [this](std::uint32_t node) { return graph_.is_event(node); });
      base::print_formatted(std::cerr,
                            "\nExceeded the threshold on the number of chordless cycles: |SCC|=%u, "
                            "threshold=%llu",
                            static_cast<unsigned>(events), 0ull);
    }
    encode_component(part);
  }
}

template <net::Process P>
void Acyclicity<P>::encode_component(std::uint32_t part) {
  Nodes pending{part};
  while (!pending.empty() && walked_arcs_ <= walks_per_arc * arcs_ + always_walked) {
    const std::uint32_t root = best_root(parts_[pending.back()]);
    pending.pop_back();
    exclude_cycles_through(root);
    const auto first = static_cast<std::uint32_t>(parts_.size());
    split_at(root);
    for (auto piece = first; piece < parts_.size(); ++piece) pending.push_back(piece);
  }
}

template <net::Process P>
bool Acyclicity<P>::refine(std::span<const Event* const> events) {
  const auto cycles = cycles_among(events);
  for (const Nodes& cycle : cycles) {
    // What another cycle has taken apart holds this one still in one piece.
    const std::uint32_t root = best_root(cycle);
    exclude_cycles_through(root);
    split_at(root);
  }
  if (cycles.empty()) return false;
  base::print_formatted(std::cerr,
                        "\nThe configuration contains a CYCLE, new constraints have been added");
  return true;
}

// The strongly connected components of the events and what they produce.
template <net::Process P>
std::vector<typename Acyclicity<P>::Nodes> Acyclicity<P>::cycles_among(
    std::span<const Event* const> events) {
  Nodes nodes;
  const auto enter = [this, &nodes](std::uint32_t node, std::uint32_t part) {
    if (part_of_[node] != part || in_model_[node] == part) return;
    in_model_[node] = part;
    nodes.push_back(node);
  };
  for (const Event* event : events) {
    const std::uint32_t part = part_of_[event->index];
    if (part == no_part) continue;
    enter(event->index, part);
    for (const std::uint32_t next : graph_.forward.successors(event->index)) enter(next, part);
  }
  std::vector<Nodes> cycles;
  finder_.run(nodes, in_model_, [&cycles](std::span<const std::uint32_t> cycle) {
    cycles.emplace_back(cycle.begin(), cycle.end());
  });
  for (const std::uint32_t node : nodes) in_model_[node] = no_part;
  return cycles;
}

// The condition or turn through which most pairs of events are neighbours.
template <net::Process P>
std::uint32_t Acyclicity<P>::best_root(std::span<const std::uint32_t> candidates) const {
  std::uint32_t best = base::no_index;
  std::uint64_t most = 0;
  for (const std::uint32_t node : candidates) {
    if (graph_.is_event(node)) continue;
    const auto is_near = [this, node](std::uint32_t next) {
      return part_of_[next] == part_of_[node];
    };
    const std::uint64_t pairs = static_cast<std::uint64_t>(
        std::ranges::count_if(graph_.backward.successors(node), is_near) *
        std::ranges::count_if(graph_.forward.successors(node), is_near));
    if (pairs <= most && best != base::no_index) continue;
    most = pairs;
    best = node;
  }
  assert(best != base::no_index && "a cycle alternates between events and others");
  return best;
}

template <net::Process P>
void Acyclicity<P>::exclude_cycles_through(std::uint32_t root) {
  assert(!graph_.is_event(root) && part_of_[root] != no_part);
  const Nodes& nodes = parts_[part_of_[root]];
  for (const std::uint32_t node : nodes) {
    if (graph_.is_event(node)) forbid_return(node, root);
  }
  for (const std::uint32_t node : nodes) reached_[node] = sat::LitUninit;
}

// Each piece of the root's part becomes a part of its own.
template <net::Process P>
void Acyclicity<P>::split_at(std::uint32_t root) {
  assert(part_of_[root] != no_part && part_of_[root] < parts_.size());
  Nodes nodes = std::exchange(parts_[part_of_[root]], {});
  std::erase(nodes, root);
  part_of_[root] = no_part;
  std::vector<Nodes> pieces;
  finder_.run(nodes, part_of_, [&pieces](std::span<const std::uint32_t> piece) {
    pieces.emplace_back(piece.begin(), piece.end());
  });
  for (const std::uint32_t node : nodes) part_of_[node] = no_part;
  for (Nodes& piece : pieces) add_part(std::move(piece));
}

// The event leads from what is reached before it to all that comes after it, but not to the root.
template <net::Process P>
void Acyclicity<P>::forbid_return(std::uint32_t event, std::uint32_t root) {
  assert(graph_.is_event(event) && !graph_.is_event(root) && part_of_[event] == part_of_[root]);
  collect_neighbours(event, root);
  const sat::Lit fired = vars_.event_lit(base::Id<Event>{event});
  sat::Lits clause;
  const auto lead = [&](sat::Lit from, sat::Lit to) {
    clause.assign({~fired, ~from, to});
    vars_.formula().add_clause(clause, sat::PermanentGroup);
  };
  const auto lit_of = [this, root](std::uint32_t node, sat::Lit of_root) {
    return node == root ? of_root : reached(node);
  };
  // One literal in the middle where that saves clauses.
  if (before_.size() > 1 && after_.size() > 1 && before_.size() + after_.size() > 4) {
    const sat::Lit middle(vars_.formula().new_var(true), false);
    for (const std::uint32_t node : before_) lead(lit_of(node, sat::LitTrue), middle);
    for (const std::uint32_t node : after_) {
      vars_.formula().add_binary(~middle, lit_of(node, sat::LitFalse), sat::PermanentGroup);
    }
    return;
  }
  for (const std::uint32_t from : before_) {
    for (const std::uint32_t to : after_)
      lead(lit_of(from, sat::LitTrue), lit_of(to, sat::LitFalse));
  }
}

// Of the neighbours the root says all that the others could say.
template <net::Process P>
void Acyclicity<P>::collect_neighbours(std::uint32_t event, std::uint32_t root) {
  const auto collect = [this, event, root](const Digraph& graph, Nodes& neighbours) {
    neighbours.clear();
    for (const std::uint32_t next : graph.successors(event)) {
      if (part_of_[next] == part_of_[event]) neighbours.push_back(next);
    }
    walked_arcs_ += neighbours.size();
    if (std::ranges::find(neighbours, root) != neighbours.end()) neighbours.assign({root});
  };
  collect(graph_.backward, before_);
  collect(graph_.forward, after_);
}

// The solver need not decide on it: whatever is not forced to be reached is not.
template <net::Process P>
sat::Lit Acyclicity<P>::reached(std::uint32_t node) {
  if (reached_[node].is_uninit()) reached_[node] = sat::Lit(vars_.formula().new_var(true), false);
  return reached_[node];
}

#define INSTANTIATE(P) template class Acyclicity<P>;
VOREL_FOR_EACH_MERGED_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
