#include "conflicts/bottlenecks.h"

#include <algorithm>

#include "net/causality.h"

namespace vorel::conflicts {

Bottlenecks::Bottlenecks(const net::StgPrefix& prefix, Direction direction)
    : prefix_{prefix},
      up_(prefix.events.size() + 1, root),
      jump_(up_.size(), root),
      depth_(up_.size(), 0) {
  auto order = net::topological_order(prefix);
  if (direction == Direction::forward) std::ranges::reverse(order);
  for (const Event* event : order) {
    constexpr std::uint32_t none = base::no_index;
    std::uint32_t common = none;
    visit_neighbours(*event, direction, [&](const Event& next) {
      const std::uint32_t node = next.index + 1;
      common = common == none ? node : last_common(common, node);
      return common != root;
    });
    hang(event->index + 1, common == none ? root : common);
  }
}

// Skew-binary jumps: two equal jumps in a row are joined into one of twice the length.
void Bottlenecks::hang(std::uint32_t node, std::uint32_t below) {
  up_[node] = below;
  depth_[node] = depth_[below] + 1;
  const std::uint32_t jump = jump_[below];
  const bool equal_jumps = depth_[below] - depth_[jump] == depth_[jump] - depth_[jump_[jump]];
  jump_[node] = equal_jumps ? jump_[jump] : below;
}

std::uint32_t Bottlenecks::last_common(std::uint32_t a, std::uint32_t b) const {
  if (depth_[a] < depth_[b]) std::swap(a, b);
  while (depth_[a] > depth_[b]) a = depth_[jump_[a]] >= depth_[b] ? jump_[a] : up_[a];
  // Of one depth, jumps are equally long.
  while (a != b) {
    const bool jumps = jump_[a] != jump_[b];
    a = jumps ? jump_[a] : up_[a];
    b = jumps ? jump_[b] : up_[b];
  }
  return a;
}

}  // namespace vorel::conflicts
