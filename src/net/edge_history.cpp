#include "net/edge_history.h"

#include <algorithm>
#include <cassert>
#include <iterator>

#include "net/causality.h"

namespace vorel::net {

EdgeHistory::EdgeHistory(const StgPrefix& prefix, const std::vector<Event*>& order)
    : prefix_{prefix},
      order_{order},
      position_(prefix.events.size()),
      rank_(prefix.signals.size(), base::no_index),
      seen_(prefix.events.size()),
      rows_(prefix.events.size()),
      depth_(prefix.events.size() + 1),
      previous_(prefix.events.size() + 1),
      jump_(prefix.events.size() + 1),
      edges_before_(prefix.events.size()) {
  list_signals();
}

void EdgeHistory::list_signals() {
  std::uint32_t position = 0;
  for (Event* event : order_) {
    position_[*event] = position++;
    Signal* const signal = event->transition->signal;
    if (signal->is_dummy()) continue;
    std::uint32_t& rank = rank_[*signal];
    if (rank == base::no_index) {
      rank = static_cast<std::uint32_t>(signals_.size());
      signals_.push_back(signal);
      edges_of_.emplace_back();
    }
    edges_of_[rank].push_back(event);
  }
}

bool EdgeHistory::visit_next_block() {
  disorder_.reset();
  block_ = block_end_;
  block_end_ = std::min(block_ + lanes, static_cast<std::uint32_t>(signals_.size()));
  if (block_ == block_end_) return false;
  const auto events = events_after_block();
  for (Event* event : events) visit(*event);
  for (const Event* event : events) rows_[event->index].fill(0);
  if (!disorder_) return true;
  // Chains are no measure where a signal is concurrent with itself: count one event at a time.
  for (std::uint32_t i = block_; i < block_end_; ++i) recount_signal(*signals_[i]);
  return true;
}

// The edges of the block and all that follows them, causes first.
std::vector<EdgeHistory::Event*> EdgeHistory::events_after_block() {
  seen_.clear();
  std::vector<Event*> events;
  const auto reach = [&](Event* event) {
    if (seen_.insert(*event)) events.push_back(event);
  };
  for (std::uint32_t i = block_; i < block_end_; ++i) std::ranges::for_each(edges_of_[i], reach);
  for (std::size_t next = 0; next < events.size(); ++next) {
    for (const auto* condition : events[next]->postset) {
      std::ranges::for_each(condition->postset, reach);
    }
  }
  if (events.size() > order_.size() / 16) {  // then looking at all is faster than sorting
    events.clear();
    std::ranges::copy_if(order_, std::back_inserter(events),
                         [this](const Event* event) { return seen_.contains(*event); });
  } else {
    std::ranges::sort(events, {}, [this](const Event* event) { return position_[*event]; });
  }
  return events;
}

void EdgeHistory::visit(Event& event) {
  Row& row = rows_[event.index];
  for (const auto* condition : event.preset) {
    if (!condition->is_initial()) join(row, rows_[condition->pre_event->index]);
  }
  const std::uint32_t rank = rank_[*event.transition->signal];
  if (rank < block_ || rank >= block_end_) return;
  std::uint32_t& last = row[rank - block_];
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
  for (Event* event : edges_of_[rank_[signal]]) {
    std::uint32_t edges = 0;
    for (const Event* past : causal_past(prefix_, std::array{event})) {
      if (past->transition->signal == &signal) ++edges;
    }
    edges_before_[*event] = edges - 1;  // the event itself is part of its past
  }
}

}  // namespace vorel::net
