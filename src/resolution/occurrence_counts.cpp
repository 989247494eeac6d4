#include "resolution/occurrence_counts.h"

#include <algorithm>
#include <cassert>

#include "net/causality.h"

namespace vorel::resolution {

OccurrenceCounts::OccurrenceCounts(const net::StgPrefix& prefix)
    : order_{net::topological_order(prefix)}, counts_(prefix.transitions.size()) {
  assert(order_.size() == prefix.events.size() && "no event causes itself");
}

const OccurrenceCount& OccurrenceCounts::of(const net::StgTransition& transition) {
  OccurrenceCount& count = counts_[transition];
  if (count.size() == order_.size()) return count;
  count = OccurrenceCount(order_.size());
  for (const Event* event : order_) {
    std::uint32_t before = 0;
    for (const auto* condition : event->preset) {
      if (!condition->is_initial()) before = std::max(before, count[*condition->pre_event]);
    }
    count[*event] = before + (event->transition == &transition ? 1 : 0);
  }
  return count;
}

std::uint32_t OccurrenceCounts::before_or_at(std::span<Event* const> events,
                                             const net::StgTransition& transition) {
  const OccurrenceCount& count = of(transition);
  std::uint32_t highest = 0;
  for (const Event* event : events) highest = std::max(highest, count[*event]);
  return highest;
}

}  // namespace vorel::resolution
