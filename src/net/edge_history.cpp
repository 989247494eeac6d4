#include "net/edge_history.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <iterator>

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
  disordered_lanes_ = 0;
  block_ = block_end_;
  block_end_ = std::min(block_ + lanes, static_cast<std::uint32_t>(signals_.size()));
  if (block_ == block_end_) return false;
  const auto events = events_after(std::span(edges_of_).subspan(block_, block_end_ - block_));
  for (Event* event : events) visit(*event);
  for (const Event* event : events) rows_[event->index].fill(0);
  for (std::uint32_t lane = 0; lane < block_end_ - block_; ++lane) {
    if ((disordered_lanes_ >> lane & 1u) != 0) recount_signal(block_ + lane);
  }
  return true;
}

// The edges and all that follows them, causes first.
std::vector<EdgeHistory::Event*> EdgeHistory::events_after(
    std::span<const std::vector<Event*>> edges) {
  seen_.clear();
  std::vector<Event*> events;
  const auto reach = [&](Event* event) {
    if (seen_.insert(*event)) events.push_back(event);
  };
  for (const auto& list : edges) std::ranges::for_each(list, reach);
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
  const Event* joined = nullptr;
  for (const auto* condition : event.preset) {
    if (condition->is_initial() || condition->pre_event == joined) continue;
    const Row& past = rows_[condition->pre_event->index];
    // Most histories that meet are those of a fork: with nothing of the block, or the same, in
    // each.
    if (joined == nullptr)
      row = past;
    else if (row != past)
      join(row, past);
    joined = condition->pre_event;
  }
  const std::uint32_t rank = rank_[*event.transition->signal];
  if (rank < block_ || rank >= block_end_) return;
  std::uint32_t& last = row[rank - block_];
  append_edge(event, last);
  last = event.index + 1;
}

void EdgeHistory::join(Row& row, const Row& other) {
  for (std::uint32_t lane = 0; lane < lanes; ++lane) {
    if (row[lane] == other[lane] || other[lane] == 0) continue;
    row[lane] = row[lane] == 0 ? other[lane] : later_edge(lane, row[lane], other[lane]);
  }
}

// Of two edges of one signal in one local configuration, the one that comes later.
std::uint32_t EdgeHistory::later_edge(std::uint32_t lane, std::uint32_t a, std::uint32_t b) {
  assert(a != 0 && b != 0);
  if (depth_[a] < depth_[b]) std::swap(a, b);
  const std::uint32_t counterpart = edge_at_depth(a, depth_[b]);
  if (counterpart != b) note_disorder(lane, counterpart, b);
  return a;
}

// The depth of an edge is the length of the longest chain to it: two edges of one depth in one
// configuration are concurrent, whatever was met before.
void EdgeHistory::note_disorder(std::uint32_t lane, std::uint32_t a, std::uint32_t b) {
  disordered_lanes_ |= 1u << lane;
  const auto is_signed = [](const Event* edge) { return edge->transition->sign != Sign::toggle; };
  if (disorder_ && (is_signed(disorder_->first) || is_signed(disorder_->second))) return;
  const Disorder met{prefix_.events[a - 1].get(), prefix_.events[b - 1].get()};
  if (!disorder_ || is_signed(met.first) || is_signed(met.second)) disorder_ = met;
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

void EdgeHistory::recount_signal(std::uint32_t rank) {
  constexpr std::size_t set_size = sizeof(Row) * 8;
  const auto& edges = edges_of_[rank];
  for (const Event* edge : edges) edges_before_[*edge] = 0;
  std::vector<Event*> set;
  for (std::size_t first = 0; first < edges.size(); first += set_size) {
    const auto begin = edges.begin() + static_cast<std::ptrdiff_t>(first);
    set.assign(begin,
               begin + static_cast<std::ptrdiff_t>(std::min(set_size, edges.size() - first)));
    count_set(*signals_[rank], {&set, 1});
  }
}

// Adds to each edge of the signal how many of the set, which has at most as many edges as a row has
// bits, precede it.
void EdgeHistory::count_set(const Signal& signal, std::span<const std::vector<Event*>> edges) {
  assert(edges.size() == 1 && edges.front().size() <= sizeof(Row) * 8);
  const auto events = events_after(edges);
  std::uint32_t next_bit = 0;
  for (Event* event : events) {
    Row& row = rows_[event->index];
    for (const auto* condition : event->preset) {
      if (condition->is_initial()) continue;
      const Row& past = rows_[condition->pre_event->index];
      for (std::uint32_t i = 0; i < lanes; ++i) row[i] |= past[i];
    }
    if (event->transition->signal != &signal) continue;
    for (const std::uint32_t word : row) {
      edges_before_[*event] += static_cast<std::uint32_t>(std::popcount(word));
    }
    // The events come in the order of the set.
    if (next_bit == edges.front().size() || edges.front()[next_bit] != event) continue;
    row[next_bit / 32] |= 1u << next_bit % 32;
    ++next_bit;
  }
  assert(next_bit == edges.front().size() && "each edge of the set was met");
  for (const Event* event : events) rows_[event->index].fill(0);
}

}  // namespace vorel::net
