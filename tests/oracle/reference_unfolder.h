// oracle/reference_unfolder.h - a slow plain unfolder: one finite complete prefix of a safe net.
// Here:      total adequate order by size, Parikh vector and Foata form [ERV-2002]; possible
//            extensions by trying all sets of conditions.
// Not here:  merging the prefix (oracle/reference_merger.h), checks (oracle/prefix_checks.h).
//
// Conditions and events are numbered in the order of their insertion, conditions of one event by
// place. A cut-off keeps the conditions that it produces, and names as correspondent the first
// event whose local configuration reaches the same state, or the initial marking. The state of an
// STG is its marking and the parities of its signals.
#pragma once

#include <cstddef>
#include <optional>

#include "net/process.h"

namespace vorel::oracle {

// Nullopt when the prefix would have more events. The net must be safe, no preset empty.
template <class N>
std::optional<net::PrefixOf<N>> unfold(const N& net, std::size_t max_events = 5'000);

}  // namespace vorel::oracle
