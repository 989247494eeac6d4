// resolution/occurrence_counts.h - how often a transition occurs up to an event.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::resolution {

// By event: the occurrences of one transition in its local configuration, itself included. Those of
// one configuration are totally ordered, as the net is safe.
using OccurrenceCount = base::IndexedBy<net::StgPrefix::Event, std::uint32_t>;

// The numbers of a transition are counted at first use, in one pass over the prefix, which must not
// change meanwhile; not to be shared by threads.
class OccurrenceCounts {
 public:
  using Event = net::StgPrefix::Event;

  explicit OccurrenceCounts(const net::StgPrefix& prefix);

  const OccurrenceCount& of(const net::StgTransition& transition);
  // In the union of the local configurations, which must be a configuration.
  std::uint32_t before_or_at(std::span<Event* const> events, const net::StgTransition& transition);

 private:
  std::vector<Event*> order_;                                    // causally
  base::IndexedBy<net::StgTransition, OccurrenceCount> counts_;  // empty until asked for
};

}  // namespace vorel::resolution
