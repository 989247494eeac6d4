// net/edge_history.h - how many edges of its own signal precede each event of an STG prefix.
// Here:      counting, for all events at once, without walking every local configuration.
// Not here:  what the counts mean for the values of signals (net/initial_values.h).
//
// The edges of one signal in a configuration are totally ordered by causality, unless the signal is
// in concurrency with itself. So it is enough to carry the last edge of each signal along the
// causal order: where two histories meet, the longer chain of edges must contain the shorter one.
// Signals are carried in blocks, so memory is one row of `lanes` words an event, whatever their
// number. Signals that first occur near each other share a block, and a block looks only at events
// that follow one of its edges: large systems of small parts cost no more than their parts.
//
// Where a signal turns out to be concurrent with itself, chains are no measure and its edges are
// counted as sets: the rows become sets of bits for 512 of its edges at a time, joined along the
// causal order. Time is then the links that follow the signal times its edges divided by 512.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::net {

class EdgeHistory {
 public:
  using Event = StgPrefix::Event;
  using Disorder = std::pair<Event*, Event*>;  // two concurrent edges of one signal
  static constexpr std::uint32_t lanes = 16;   // signals in a block, at most 32

  // `order`: all events that are to be looked at, each after its predecessors.
  EdgeHistory(const StgPrefix& prefix, const std::vector<Event*>& order);

  // Counts for the next block of signals; false when there is none left.
  bool visit_next_block();
  // A pair of concurrent edges in one local configuration, met by the last visit; none otherwise.
  // One with a sign, if there is any among the pairs that were met.
  const std::optional<Disorder>& disorder() const { return disorder_; }
  // For an event of a visited signal that is not a dummy.
  std::uint32_t edges_before(const Event& event) const { return edges_before_[event]; }
  // The number of the last of these, no_index for none. Not for an event of a signal in disorder.
  std::uint32_t edge_before(const Event& event) const {
    const std::uint32_t edge = previous_[event.index + 1];
    return edge == 0 ? base::no_index : edge - 1;
  }

 private:
  // Event number + 1 of the last edge of each signal of the block, 0 for none. In a recount: bits.
  using Row = std::array<std::uint32_t, lanes>;

  void list_signals();
  std::vector<Event*> events_after(std::span<const std::vector<Event*>> edges);
  void visit(Event& event);
  void join(Row& row, const Row& other);
  std::uint32_t later_edge(std::uint32_t lane, std::uint32_t a, std::uint32_t b);
  void note_disorder(std::uint32_t lane, std::uint32_t a, std::uint32_t b);
  std::uint32_t edge_at_depth(std::uint32_t edge, std::uint32_t depth) const;
  void append_edge(const Event& event, std::uint32_t previous);
  void recount_signal(std::uint32_t rank);
  void count_set(const Signal& signal, std::span<const std::vector<Event*>> edges);

  // Edges are event numbers + 1; the tables below are indexed by them, entry 0 is the root.
  const StgPrefix& prefix_;
  const std::vector<Event*>& order_;
  base::IndexedBy<Event, std::uint32_t> position_;  // in the order
  std::vector<Signal*> signals_;                    // with edges, by first edge
  std::vector<std::vector<Event*>> edges_of_;       // by position in signals_
  base::IndexedBy<Signal, std::uint32_t> rank_;     // position in signals_
  std::uint32_t block_ = 0, block_end_ = 0;  // the block being visited, positions in signals_

  base::MarkSet<Event> seen_;
  std::vector<Row> rows_;                // by event number, all 0 between blocks
  std::vector<std::uint32_t> depth_;     // number of edges of the chain that ends here
  std::vector<std::uint32_t> previous_;  // the edge before, 0 for the first
  std::vector<std::uint32_t> jump_;      // some edge further back: levels are found in log steps
  base::IndexedBy<Event, std::uint32_t> edges_before_;
  std::optional<Disorder> disorder_;
  std::uint32_t disordered_lanes_ = 0;  // of the block, one bit each
};

}  // namespace vorel::net
