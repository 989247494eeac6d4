// configuration/triggers.h - the events that make an event possible.
#pragma once

#include <span>
#include <vector>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::configuration {

// The triggers of an event are its maximal causal predecessors, with dummies looked through: those
// from which no other event of a signal leads to it. A producer of its preset from which another
// one does is no trigger: when it fires, the event still waits.
class TriggerFinder {
 public:
  using Event = net::StgPrefix::Event;

  explicit TriggerFinder(const net::StgPrefix& prefix);

  // Sorted by index.
  std::vector<const Event*> triggers_of(const Event& event);
  // Those of an event that there could be, which would come right after all the causes.
  std::vector<const Event*> triggers_after(std::span<const Event* const> causes);

 private:
  void collect_candidates(std::span<const Event* const> causes);
  void mark_past_of_candidates();

  // The length of the longest chain of causes: an event is higher than its causes.
  base::IndexedBy<Event, std::uint32_t> height_;
  base::MarkSet<Event> seen_;
  std::vector<const Event*> causes_, open_, candidates_;  // scratch
};

}  // namespace vorel::configuration
