#include "net/edge_history.h"

#include <cassert>

#include "net/causality.h"

namespace vorel {

EdgeHistory::EdgeHistory(const StgPrefix& prefix, const std::vector<Event*>& order)
    : prefix_{prefix},
      order_{order},
      rows_(prefix.events.size()),
      depth_(prefix.events.size() + 1),
      previous_(prefix.events.size() + 1),
      jump_(prefix.events.size() + 1),
      edges_before_(prefix.events.size()) {}

void EdgeHistory::visit_signals_from(std::uint32_t first) {
  disorder_.reset();
  for (Event* event : order_) visit(*event, first);
  if (!disorder_) return;
  // Chains are no measure where a signal is concurrent with itself: count one event at a time.
  for (std::uint32_t i = first; i < first + lanes && i < prefix_.internals_end; ++i) {
    recount_signal(*prefix_.signals[i]);
  }
}

void EdgeHistory::visit(Event& event, std::uint32_t first) {
  Row& row = rows_[event.index];
  row.fill(0);
  for (const auto* condition : event.preset) {
    if (!condition->is_initial()) join(row, rows_[condition->pre_event->index]);
  }
  const Signal& signal = *event.transition->signal;
  if (signal.is_dummy() || signal.index < first || signal.index >= first + lanes) return;
  std::uint32_t& last = row[signal.index - first];
  append_edge(event, last);
  last = event.index + 1;
}

void EdgeHistory::join(Row& row, const Row& other) {
  for (std::uint32_t lane = 0; lane < lanes; ++lane) {
    if (row[lane] != other[lane]) row[lane] = later_edge(row[lane], other[lane]);
  }
}

// Of two edges of one signal in one local configuration, the one that comes later.
std::uint32_t EdgeHistory::later_edge(std::uint32_t a, std::uint32_t b) {
  if (depth_[a] < depth_[b]) std::swap(a, b);
  if (b == 0) return a;
  const std::uint32_t counterpart = edge_at_depth(a, depth_[b]);
  if (counterpart != b && !disorder_) {
    disorder_ = {prefix_.events[counterpart - 1].get(), prefix_.events[b - 1].get()};
  }
  return a;
}

std::uint32_t EdgeHistory::edge_at_depth(std::uint32_t edge, std::uint32_t depth) const {
  assert(depth <= depth_[edge]);
  while (depth_[edge] > depth) {
    edge = depth_[jump_[edge]] >= depth ? jump_[edge] : previous_[edge];
  }
  return edge;
}

void EdgeHistory::append_edge(const Event& event, std::uint32_t previous) {
  const std::uint32_t edge = event.index + 1;
  edges_before_[event] = depth_[previous];
  depth_[edge] = depth_[previous] + 1;
  previous_[edge] = previous;
  // Skew-binary jumps: two equal jumps in a row are joined into one of twice the length.
  const std::uint32_t jump = jump_[previous];
  const bool equal_jumps = depth_[previous] - depth_[jump] == depth_[jump] - depth_[jump_[jump]];
  jump_[edge] = equal_jumps ? jump_[jump] : previous;
}

void EdgeHistory::recount_signal(const Signal& signal) {
  for (Event* event : order_) {
    if (event->transition->signal != &signal) continue;
    std::uint32_t edges = 0;
    for (const Event* past : causal_past(prefix_, std::array{event})) {
      if (past->transition->signal == &signal) ++edges;
    }
    edges_before_[*event] = edges - 1;  // the event itself is part of its past
  }
}

}  // namespace vorel
