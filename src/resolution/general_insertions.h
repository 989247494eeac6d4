// resolution/general_insertions.h - where a transition of a new signal that computes a function of
// given signals can be put, with several sources or targets.
// Here:      which sets of sources there are; all valid insertions of tag General for them.
// Not here:  the targets for one set of sources (resolution/transition_locks.h), insertions of
// other
//            tags (resolution/insertions.h).
#pragma once

#include <span>
#include <vector>

#include "net/process.h"
#include "resolution/transition_locks.h"

namespace vorel::resolution {

// Those of max_destination_cliques() for each set of one to three transitions of the signals of
// which no two are locked: of two that are, the later one implies the other. Valid as
// resolution/insertions.h has it; in the order of candidates, each once. As there can be
// exponentially many, no more sets of sources are looked at when there are 1000. `locks` is the
// relation of the prefix, for which the same must hold as for insertions().
std::vector<net::Insertion> general_insertions(const net::StgPrefix& prefix,
                                               const TransitionRelation& locks,
                                               std::span<const net::SignalId> signals);

}  // namespace vorel::resolution
