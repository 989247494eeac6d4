#include "resolution/critical_path.h"

#include <algorithm>
#include <ranges>

#include "net/causality.h"

namespace vorel::resolution {

using net::SignalKind;
using Event = CriticalPath::Event;

std::uint32_t CriticalPath::weight(const Event& event) {
  switch (event.transition->signal->kind) {
    case SignalKind::input:
      return 3;
    case SignalKind::output:
    case SignalKind::internal:
      return 1;
    case SignalKind::dummy:
      break;
  }
  return 0;
}

CriticalPath::CriticalPath(const net::StgPrefix& prefix)
    : depth_(prefix.events.size()), is_critical_(prefix.events.size()) {
  const auto order = net::topological_order(prefix);
  for (const Event* event : order) {
    std::uint32_t last = 0;
    for (const auto* condition : event->preset) {
      if (!condition->is_initial()) last = std::max(last, depth_[*condition->pre_event]);
    }
    depth_[*event] = last + weight(*event);
  }
  for (const Event* event : std::views::reverse(order)) {
    const SignalKind kind = event->transition->signal->kind;
    if (kind == SignalKind::input || kind == SignalKind::output) is_critical_[*event] = true;
    if (!is_critical_[*event]) continue;
    for (const auto* condition : event->preset) {
      if (condition->is_initial()) continue;
      const Event& producer = *condition->pre_event;
      if (depth_[producer] + weight(*event) == depth_[*event]) is_critical_[producer] = true;
    }
  }
}

bool CriticalPath::is_delaying(std::span<const Event* const> causes,
                               std::span<const Event* const> followers) const {
  std::uint32_t depth = 0;
  for (const Event* cause : causes) depth = std::max(depth, depth_[*cause]);
  ++depth;
  return std::ranges::any_of(followers, [this, depth](const Event* follower) {
    return is_critical(*follower) && depth + weight(*follower) > depth_[*follower];
  });
}

}  // namespace vorel::resolution
