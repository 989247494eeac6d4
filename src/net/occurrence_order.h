// net/occurrence_order.h - whether the occurrences of each place in a merged process are in order.
// Here:      the depths of its conditions, one by one and along the events.
// Not here:  the depths of a prefix (net/occurrence_depth.h).
//
// A safe net leaves a place before it enters it again, so the conditions of a place have the depths
// 1, 2, ... and the token of the first one alone may be there from the start; an event that leaves
// the place at one depth enters it, if at all, at the next. A file may start to count at another
// depth where that condition is marked. An event that produces what it consumes, or something
// before it, is on a cycle of its own and never fires; it is no fault here.
#pragma once

#include <cstdint>

#include "net/process.h"

namespace vorel::net {

enum class OccurrenceFault : std::uint8_t {
  none,
  repeated,      // another condition of the place has this depth
  gap,           // no condition of the place is one depth lower
  marked_later,  // marked at the start, and another condition of the place is lower
  skipped,       // `event` enters the place here, from a condition more than one depth lower
};

template <class N>
struct DisorderedOccurrence {
  OccurrenceFault fault = OccurrenceFault::none;
  const MpConditionOf<N>* condition = nullptr;
  const MpEventOf<N>* event = nullptr;
};

// The first fault, by place and depth, then by event. Conditions and events must have their places
// and links. Sorts the conditions, else linear.
template <class N>
DisorderedOccurrence<N> find_disordered_occurrence(const MergedProcessOf<N>& process);

}  // namespace vorel::net
