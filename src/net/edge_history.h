// net/edge_history.h - how many edges of its own signal precede each event of an STG prefix.
// Here:      counting, for all events at once, without walking every local configuration.
// Not here:  what the counts mean for the values of signals (net/initial_values.h).
//
// The edges of one signal in a configuration are totally ordered by causality, unless the signal is
// in concurrency with itself. So it is enough to carry the last edge of each signal along the
// causal order: where two histories meet, the longer chain of edges must contain the shorter one.
// An edge costs the logarithm of the number of signals, a join of causes as much for each signal in
// which they differ (net/causal_arrays.h).
//
// Where a signal turns out to be concurrent with itself, chains are no measure and its edges are
// counted as sets of bits for 512 of its edges at a time, joined along the causal order. Time is
// then the links that follow the signal times its edges divided by 512.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "base/chains.h"
#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::net {

class EdgeHistory {
 public:
  using Event = StgPrefix::Event;
  using Disorder = std::pair<Event*, Event*>;  // two concurrent edges of one signal

  // `order`: all events that are to be looked at, each after its predecessors.
  EdgeHistory(const StgPrefix& prefix, const std::vector<Event*>& order);

  // Pairs of concurrent edges that were met in one local configuration: one of each 16 signals, in
  // the order of their first edges, if these have any; one with a sign, if one of these was met.
  const std::vector<Disorder>& disorders() const { return disorders_; }
  // 0 for a dummy.
  std::uint32_t edges_before(const Event& event) const {
    const std::uint32_t rank = rank_[*event.transition->signal];
    if (rank == base::no_index) return 0;
    return is_disordered_[rank] ? recounted_[event] : edges_.depth(event.index + 1) - 1;
  }
  // The number of the last of these, no_index for none. Not for an event of a signal in disorder.
  std::uint32_t edge_before(const Event& event) const {
    const std::uint32_t edge = edges_.before(event.index + 1);
    return edge == 0 ? base::no_index : edge - 1;
  }

 private:
  std::uint32_t rank_signals();
  void carry_edges(std::uint32_t rank_count);
  std::uint32_t later_edge(std::uint32_t rank, std::uint32_t a, std::uint32_t b);
  void note_disorder(std::uint32_t rank, std::uint32_t a, std::uint32_t b);
  void recount_disordered();

  const StgPrefix& prefix_;
  const std::vector<Event*>& order_;
  base::IndexedBy<Signal, std::uint32_t> rank_;  // of those with edges, by first edge

  base::Chains edges_;               // event numbers + 1; the depth counts an edge, too
  std::vector<bool> is_disordered_;  // by rank
  base::IndexedBy<Event, std::uint32_t> recounted_;  // edges before those in disorder
  std::vector<Disorder> disorders_;
};

}  // namespace vorel::net
