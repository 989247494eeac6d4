// configuration/triggers.h - the events that make an event possible.
#pragma once

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::configuration {

// The triggers of an event are its maximal causal predecessors, with dummies looked through: those
// from which no other event of a signal leads to it. A producer of its preset from which another
// one does is no trigger: when it fires, the event still waits.
class TriggerFinder {
 public:
  explicit TriggerFinder(const net::StgPrefix& prefix);

  // Sorted by index.
  std::vector<const net::StgPrefix::Event*> triggers_of(const net::StgPrefix::Event& event);

 private:
  void collect_candidates(const net::StgPrefix::Event& event);
  void mark_past_of_candidates();

  // The length of the longest chain of causes: an event is higher than its causes.
  base::IndexedBy<net::StgPrefix::Event, std::uint32_t> height_;
  base::MarkSet<net::StgPrefix::Event> seen_;
  std::vector<const net::StgPrefix::Event*> open_, candidates_;  // scratch
};

}  // namespace vorel::configuration
