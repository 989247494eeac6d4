// configuration/digraph.h - directed graphs over numbered nodes, as flat arrays.
// Here:      successors, and strongly connected components of a part of a graph [Tar-1972].
// Not here:  what the nodes stand for (configuration/causal_graph.h).
#pragma once

#include <cassert>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace vorel::configuration {

struct Arc {
  std::uint32_t from = 0, to = 0;
};

class Digraph {
 public:
  Digraph(std::uint32_t node_count, std::span<const Arc> arcs);

  std::uint32_t node_count() const { return static_cast<std::uint32_t>(first_.size() - 1); }
  // In the order of the arcs.
  std::span<const std::uint32_t> successors(std::uint32_t node) const {
    assert(node < node_count());
    return std::span(targets_).subspan(first_[node], first_[node + 1] - first_[node]);
  }

 private:
  std::vector<std::uint32_t> first_;  // by node, and the end
  std::vector<std::uint32_t> targets_;
};

// Finds components again and again in parts of one graph; each search takes time and touches memory
// in proportion to its part.
class ComponentFinder {
 public:
  // Keeps a reference to the graph.
  explicit ComponentFinder(const Digraph& graph);

  using Found = std::function<void(std::span<const std::uint32_t> component)>;
  // Calls back with each component of two or more nodes among the given nodes. An arc counts if
  // both ends have the same label. All nodes with the label of a given one must be given.
  void run(std::span<const std::uint32_t> nodes, std::span<const std::uint32_t> labels,
           const Found& found);

 private:
  struct Visit {
    std::uint32_t node, next;  // the successor to look at next
  };
  void explore(std::uint32_t root, std::span<const std::uint32_t> labels, const Found& found);
  void enter(std::uint32_t node);
  void leave(const Found& found);

  const Digraph& graph_;
  std::vector<std::uint32_t> order_;   // by node: when it was entered, from 1; 0 if not yet
  std::vector<std::uint32_t> lowest_;  // by node: earliest open node that it is known to reach
  std::vector<std::uint32_t> open_;    // entered, component not yet known
  std::vector<Visit> path_;
  std::uint32_t entered_ = 0;
};

}  // namespace vorel::configuration
