// resolution/occurrence_order.h - causality and conflict between the occurrences of the candidates
// and the events of the prefix.
// Here:      three relations as rows of bits, one bit for each occurrence.
// Not here:  what follows from them: which candidates exclude each other
//            (resolution/insertion_mutex.h), how edges alternate (resolution/alternation.h).
//
// The order of two occurrences is that of the prefix in which the insertions of both were made. The
// order of events never changes by insertions. Memory is quadratic in the occurrences, or their
// number times that of the events.
#pragma once

#include "base/bit_rows.h"
#include "resolution/candidates.h"

namespace vorel::resolution {

class OccurrenceOrder {
 public:
  using EventId = configuration::StgEventId;

  explicit OccurrenceOrder(const Candidates& candidates);

  // The occurrences that come before the event (or the other occurrence), those that come after it,
  // and those in conflict with it. What is in none of the three is concurrent with it.
  base::BitRow before(EventId event) const { return before_[row(event)]; }
  base::BitRow before(OccurrenceId occurrence) const { return before_[row(occurrence)]; }
  base::BitRow after(EventId event) const { return after_[row(event)]; }
  base::BitRow after(OccurrenceId occurrence) const { return after_[row(occurrence)]; }
  base::BitRow conflicting(EventId event) const { return conflicting_[row(event)]; }
  base::BitRow conflicting(OccurrenceId occurrence) const { return conflicting_[row(occurrence)]; }

 private:
  class Maker;

  std::size_t row(EventId event) const {
    assert(event.value < events_);
    return event.value;
  }
  std::size_t row(OccurrenceId occurrence) const {
    assert(occurrence.value < occurrences_);
    return events_ + std::size_t{occurrence.value};
  }

  std::uint32_t events_, occurrences_;
  base::BitRows before_, after_, conflicting_;  // rows: events, then occurrences
};

}  // namespace vorel::resolution
