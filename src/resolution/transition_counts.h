// resolution/transition_counts.h - how often transitions occur before the events of others.
// Here:      the differences that are the same at all events of a transition, and at cut-offs.
// Not here:  what follows for insertions (resolution/insertions.h).
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "base/indexed_by.h"
#include "net/instances.h"

namespace vorel::resolution {

// For all pairs of transitions at once: a pass over the events for each transition, and memory
// quadratic in the transitions. The events must be numbered causally.
class TransitionCounts {
 public:
  using TransitionId = base::Id<net::StgTransition>;

  explicit TransitionCounts(const net::Instances<net::StgPrefix>& instances);

  static constexpr std::int32_t varying = std::numeric_limits<std::int32_t>::max();

  // The number of events of `counted` less that of events of `at`, strictly before each event of
  // `at`; varying if it is not the same before all of them, or if there is none.
  std::int32_t lead(TransitionId counted, TransitionId at) const {
    return leads_[counted][at.value];
  }
  // At each cut-off, both have occurred equally more often than at its correspondents.
  bool agree_at_cut_offs(TransitionId a, TransitionId b) const {
    return class_at_cut_offs_[a] == class_at_cut_offs_[b];
  }

 private:
  class Maker;

  base::IndexedBy<net::StgTransition, std::vector<std::int32_t>> leads_;  // by counted, then by at
  base::IndexedBy<net::StgTransition, std::uint32_t> class_at_cut_offs_;
};

}  // namespace vorel::resolution
