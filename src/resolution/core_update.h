// resolution/core_update.h - known cores after a signal has been inserted.
// Here:      which of them are still conflicts, as they stand or with an edge of the new signal
//            more or less.
// Not here:  looking for new ones (resolution/core_computation.h).
#pragma once

#include <span>
#include <vector>

#include "conflicts/core.h"

namespace vorel::resolution {

// The cores are of the prefix before the events of the newest signal came, with the numbers that
// their events have now. Each configuration is completed to one of this prefix; if the two are no
// longer in conflict, its variants are tried: without the last event of the new signal and what
// follows it, or with one more such event that is enabled. What is no conflict in any of these ways
// is dropped. No two of the result have one sum.
std::vector<conflicts::Core> updated_cores(const net::StgPrefix& prefix,
                                           std::span<const conflicts::Core> cores,
                                           net::SignalId newest,
                                           const conflicts::KeepCore& is_conflict);

}  // namespace vorel::resolution
