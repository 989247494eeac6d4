// conflicts/core_blocking.h - which pairs of configurations a known core explains.
// Here:      the events that such a pair differs in, and those that it does not.
// Not here:  the clauses (conflicts/conflict_check.h), the cores (conflicts/core.h).
#pragma once

#include "conflicts/core.h"

namespace vorel::conflicts {

// Stands for all pairs that differ in every event of the one set and in none of the other.
struct BlockedPairs {
  configuration::EventSet different;
  configuration::EventSet shared;
};

// The pairs of configurations with equal codes that differ in the core and perhaps elsewhere, but
// are still two configurations with equal codes when the core is taken out of them. So whatever
// else they differ in is a difference of its own, to be found by itself. With `conflict_free` (no
// condition of the prefix has two consumers) the core can also be added to the configuration that
// lacks it, for either side of the core: up to four sets of pairs.
std::vector<BlockedPairs> pairs_explained_by(const net::StgPrefix& prefix, const Core& core,
                                             bool conflict_free);

}  // namespace vorel::conflicts
