// resolution/insertions.h - where a transition of a new signal can be put.
// Here:      all insertions after which the STG does the same as before but for the new signal, and
//            its prefix needs no unfolding.
// Not here:  which of them go together (resolution/insertion_mutex.h, resolution/alternation.h).
//
// An insertion is valid if
//   - neither transition of it is dead, and no input waits for the new signal, not even behind
//     dummies;
//   - what net/insert_transition.h asks of its kind holds, so that the edited prefix is complete.
//     Correspondents count together there, as the one configuration that they are;
//   - no choice makes a hazard of it (resolution/persistency.h).
#pragma once

#include <vector>

#include "net/insert_transition.h"

namespace vorel::resolution {

// Which concurrent insertions u -||-> t are wanted: none (0), those where u feeds the preset of a
// transition that feeds the preset of t (1), all (2).
//
// The valid ones in the order of candidates, each once. Left out is what another insertion says
// too: one after a dummy before all that it produces on, one after a transition that is one before
// another transition, and a concurrent one from u that t leads to through dummies, or where u feeds
// t or is fed by it. The events of the prefix must be numbered causally and its correspondents
// known. At verbosity 5 the number is printed, at verbosity 8 each one, too.
std::vector<net::Insertion> insertions(const net::StgPrefix& prefix, int concurrent_insertions);

}  // namespace vorel::resolution
