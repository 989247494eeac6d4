#include "configuration/digraph.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace vorel::configuration {
namespace {

// Reached from no open node any more: its component has been reported.
constexpr std::uint32_t closed = std::numeric_limits<std::uint32_t>::max();

}  // namespace

Digraph::Digraph(std::uint32_t node_count, std::span<const Arc> arcs)
    : first_(std::size_t{node_count} + 1), targets_(arcs.size()) {
  for (const Arc& arc : arcs) {
    assert(arc.from < node_count && arc.to < node_count);
    ++first_[arc.from + 1];
  }
  std::partial_sum(first_.begin(), first_.end(), first_.begin());
  std::vector<std::uint32_t> next(first_.begin(), first_.end() - 1);
  for (const Arc& arc : arcs) targets_[next[arc.from]++] = arc.to;
}

ComponentFinder::ComponentFinder(const Digraph& graph)
    : graph_{graph}, order_(graph.node_count()), lowest_(graph.node_count()) {}

void ComponentFinder::run(std::span<const std::uint32_t> nodes,
                          std::span<const std::uint32_t> labels, const Found& found) {
  assert(labels.size() == graph_.node_count() && open_.empty() && path_.empty());
  for (const std::uint32_t node : nodes) order_[node] = 0;
  entered_ = 0;
  for (const std::uint32_t node : nodes) {
    if (order_[node] == 0) explore(node, labels, found);
  }
}

void ComponentFinder::explore(std::uint32_t root, std::span<const std::uint32_t> labels,
                              const Found& found) {
  enter(root);
  while (!path_.empty()) {
    auto& [node, next] = path_.back();
    const auto successors = graph_.successors(node);
    if (next == successors.size()) {
      leave(found);
      continue;
    }
    const std::uint32_t successor = successors[next++];
    if (labels[successor] != labels[node]) continue;
    if (order_[successor] == 0) {
      enter(successor);
    } else if (order_[successor] != closed) {
      lowest_[node] = std::min(lowest_[node], order_[successor]);
    }
  }
}

void ComponentFinder::enter(std::uint32_t node) {
  order_[node] = lowest_[node] = ++entered_;
  open_.push_back(node);
  path_.push_back({node, 0});
}

void ComponentFinder::leave(const Found& found) {
  const std::uint32_t node = path_.back().node;
  path_.pop_back();
  if (!path_.empty()) {
    std::uint32_t& lowest = lowest_[path_.back().node];
    lowest = std::min(lowest, lowest_[node]);
  }
  if (lowest_[node] != order_[node]) return;
  const auto first = std::ranges::find(open_.rbegin(), open_.rend(), node).base() - 1;
  for (auto member = first; member != open_.end(); ++member) order_[*member] = closed;
  if (open_.end() - first > 1) found({first, open_.end()});
  open_.erase(first, open_.end());
}

}  // namespace vorel::configuration
