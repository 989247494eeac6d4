#include "net/edge_history.h"

#include <algorithm>
#include <bitset>
#include <cassert>
#include <iterator>
#include <span>

#include "net/causal_arrays.h"

namespace vorel::net {
namespace {

using Event = EdgeHistory::Event;

constexpr std::uint32_t group_size = 16;  // signals that share a disorder

// Counts the edges of a signal in the past of each other one as sets.
class SetCount {
 public:
  SetCount(const StgPrefix& prefix, const std::vector<Event*>& order)
      : order_{order}, seen_(prefix.events.size()), before_(prefix.events.size()) {}

  // Adds to edges_before.
  void count(std::span<Event* const> edges, base::IndexedBy<Event, std::uint32_t>& edges_before) {
    for (std::size_t first = 0; first < edges.size(); first += EdgeSet{}.size()) {
      const auto size = std::min(EdgeSet{}.size(), edges.size() - first);
      count_set(edges.subspan(first, size), edges_before);
    }
  }

 private:
  using EdgeSet = std::bitset<512>;

  void count_set(std::span<Event* const> edges,
                 base::IndexedBy<Event, std::uint32_t>& edges_before) {
    const auto events = events_after(edges);
    std::size_t next_bit = 0;
    for (const Event* event : events) {
      EdgeSet& set = before_[*event];
      for (const auto* condition : event->preset) {
        if (!condition->is_initial()) set |= before_[*condition->pre_event];
      }
      if (event->transition->signal != edges.front()->transition->signal) continue;
      edges_before[*event] += static_cast<std::uint32_t>(set.count());
      // The events come in the order of the set.
      if (next_bit < edges.size() && edges[next_bit] == event) set.set(next_bit++);
    }
    assert(next_bit == edges.size() && "each edge of the set was met");
    for (const Event* event : events) before_[*event].reset();
  }

  // The edges and all that follows them, causes first.
  std::vector<Event*> events_after(std::span<Event* const> edges) {
    seen_.clear();
    std::vector<Event*> reached;
    const auto reach = [&](Event* event) {
      if (seen_.insert(*event)) reached.push_back(event);
    };
    std::ranges::for_each(edges, reach);
    for (std::size_t next = 0; next < reached.size(); ++next) {
      for (const auto* condition : reached[next]->postset) {
        std::ranges::for_each(condition->postset, reach);
      }
    }
    std::vector<Event*> events;
    std::ranges::copy_if(order_, std::back_inserter(events),
                         [this](const Event* event) { return seen_.contains(*event); });
    return events;
  }

  const std::vector<Event*>& order_;
  base::MarkSet<Event> seen_;
  base::IndexedBy<Event, EdgeSet> before_;  // all empty between sets
};

}  // namespace

EdgeHistory::EdgeHistory(const StgPrefix& prefix, const std::vector<Event*>& order)
    : prefix_{prefix},
      order_{order},
      rank_(prefix.signals.size(), base::no_index),
      edges_(prefix.events.size() + 1) {
  const std::uint32_t rank_count = rank_signals();
  is_disordered_.resize(rank_count);
  disorders_.resize(rank_count / group_size + 1);
  carry_edges(rank_count);
  std::erase(disorders_, Disorder{});
  if (!disorders_.empty()) recount_disordered();
}

// The number of ranks.
std::uint32_t EdgeHistory::rank_signals() {
  std::uint32_t count = 0;
  for (const Event* event : order_) {
    const Signal& signal = *event->transition->signal;
    if (!signal.is_dummy() && rank_[signal] == base::no_index) rank_[signal] = count++;
  }
  return count;
}

void EdgeHistory::carry_edges(std::uint32_t rank_count) {
  CausalArrays<Stg> last_edges(prefix_, order_, rank_count);
  const auto later = [this](std::uint32_t rank, std::uint32_t a, std::uint32_t b) {
    return later_edge(rank, a, b);
  };
  const auto precedes = [&](const Event& cause, const Event& other) {
    const std::uint32_t signal = rank_[*cause.transition->signal];
    return signal != base::no_index &&
           edges_.is_on_way(cause.index + 1, last_edges.at(other, signal));
  };
  for (const Event* event : order_) {
    last_edges.visit(*event, later, precedes);
    const std::uint32_t rank = rank_[*event->transition->signal];
    if (rank == base::no_index) continue;
    edges_.place(event->index + 1, last_edges.at(rank));
    last_edges.set(rank, event->index + 1);
  }
}

// Of two edges of one signal in one local configuration, the one that comes later.
std::uint32_t EdgeHistory::later_edge(std::uint32_t rank, std::uint32_t a, std::uint32_t b) {
  assert(a != 0 && b != 0);
  if (edges_.depth(a) < edges_.depth(b)) std::swap(a, b);
  const std::uint32_t counterpart = edges_.at_depth(a, edges_.depth(b));
  if (counterpart != b) note_disorder(rank, counterpart, b);
  return a;
}

// The depth of an edge is the length of the longest chain to it: two edges of one depth in one
// configuration are concurrent, whatever was met before.
void EdgeHistory::note_disorder(std::uint32_t rank, std::uint32_t a, std::uint32_t b) {
  is_disordered_[rank] = true;
  Disorder& noted = disorders_[rank / group_size];
  const auto has_sign = [](const Disorder& disorder) {
    return disorder.first->transition->sign != Sign::toggle ||
           disorder.second->transition->sign != Sign::toggle;
  };
  const Disorder met{prefix_.events[a - 1].get(), prefix_.events[b - 1].get()};
  if (noted == Disorder{} || (!has_sign(noted) && has_sign(met))) noted = met;
}

void EdgeHistory::recount_disordered() {
  std::vector<std::vector<Event*>> edges_of(is_disordered_.size());
  for (Event* event : order_) {
    const std::uint32_t rank = rank_[*event->transition->signal];
    if (rank == base::no_index || !is_disordered_[rank]) continue;
    edges_of[rank].push_back(event);
  }
  recounted_ = base::IndexedBy<Event, std::uint32_t>(prefix_.events.size());
  SetCount sets(prefix_, order_);
  for (const auto& edges : edges_of) sets.count(edges, recounted_);
}

}  // namespace vorel::net
