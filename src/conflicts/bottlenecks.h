// conflicts/bottlenecks.h - events that all that is going on at a time comes together in.
// Here:      for each event the last one before it, or the first one after it, that lies on every
//            causal chain there.
// Not here:  other ways between events (conflicts/local_refutation.h).
//
// These are the immediate dominators of the causal order, which has no cycles: that of an event is
// the last common one on the ways up from its direct neighbours. A few steps along them lead across
// forks and joins of any width.
#pragma once

#include <vector>

#include "net/process.h"

namespace vorel::conflicts {

enum class Direction : std::uint8_t { backward, forward };

// Calls visit(event) for each direct cause, or for each direct effect that is not a cut-off, once
// for each condition between them, until it says false.
template <class Visit>
void visit_neighbours(const net::StgPrefix::Event& event, Direction direction, const Visit& visit) {
  if (direction == Direction::backward) {
    for (const auto* condition : event.preset) {
      if (!condition->is_initial() && !visit(*condition->pre_event)) return;
    }
    return;
  }
  for (const auto* condition : event.postset) {
    for (const auto* next : condition->postset) {
      if (!next->is_cut_off() && !visit(*next)) return;
    }
  }
}

class Bottlenecks {
 public:
  using Event = net::StgPrefix::Event;

  // Takes time linear in the arcs, but for a logarithm.
  Bottlenecks(const net::StgPrefix& prefix, Direction direction);

  // Null if there is none.
  const Event* of(const Event& event) const {
    const std::uint32_t node = up_[event.index + 1];
    return node == root ? nullptr : prefix_.events[node - 1].get();
  }

 private:
  static constexpr std::uint32_t root = 0;  // events have their number + 1

  void hang(std::uint32_t node, std::uint32_t below);
  std::uint32_t last_common(std::uint32_t a, std::uint32_t b) const;

  const net::StgPrefix& prefix_;
  std::vector<std::uint32_t> up_, jump_, depth_;
};

}  // namespace vorel::conflicts
