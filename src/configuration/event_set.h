// configuration/event_set.h - sets of events of a prefix as sorted lists of their numbers.
// Here:      set operations, causal closedness, dummies at the end of a configuration.
// Not here:  the state that a configuration ends in (configuration/final_state.h).
#pragma once

#include <span>
#include <vector>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::configuration {

using StgEventId = base::Id<net::StgPrefix::Event>;
using EventSet = std::vector<StgEventId>;  // ascending, each once

EventSet event_set(std::span<const net::StgPrefix::Event* const> events);
std::vector<const net::StgPrefix::Event*> events_of(const net::StgPrefix& prefix,
                                                    const EventSet& set);
// A flag per event of the prefix.
base::IndexedBy<net::StgPrefix::Event, bool> membership(const net::StgPrefix& prefix,
                                                        const EventSet& set);

bool includes(const EventSet& large, const EventSet& small);
EventSet set_difference(const EventSet& a, const EventSet& b);
EventSet set_union(const EventSet& a, const EventSet& b);
EventSet symmetric_difference(const EventSet& a, const EventSet& b);

// The causal predecessors of each event are in the set.
bool is_causally_closed(const net::StgPrefix& prefix, const EventSet& set);
// Closed, and no two of its events consume one condition.
bool is_configuration(const net::StgPrefix& prefix, const EventSet& set);
bool has_only_dummies(const net::StgPrefix& prefix, const EventSet& set);

// The configuration without the dummies that no event of another signal in it needs.
EventSet without_maximal_dummies(const net::StgPrefix& prefix, const EventSet& configuration);

}  // namespace vorel::configuration
