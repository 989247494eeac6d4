// resolution/edge_occurrence.h - one occurrence of an edge that could be inserted.
// Here:      where it would stand among the events of the prefix.
// Not here:  all occurrences of the candidates of a step (resolution/candidates.h), their order
//            among each other (resolution/occurrence_order.h).
#pragma once

#include <vector>

#include "configuration/event_set.h"

namespace vorel::resolution {

using ConditionId = base::Id<net::StgPrefix::Condition>;

// The event that an insertion would make, by the events next to it. No follower is a cause, or
// before one.
struct EdgeOccurrence {
  configuration::EventSet causes;     // all of them come before it; none: it can fire at the start
  configuration::EventSet followers;  // it comes before each of them, cut-offs included
  std::vector<ConditionId> consumed{};  // put before a transition: these are taken from its event
  std::vector<ConditionId> moved{};     // put after an event: these are what it no longer produces
};

using OccurrenceId = base::Id<EdgeOccurrence>;

}  // namespace vorel::resolution
