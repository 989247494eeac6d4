// decomposition/gate_covers.h - what a gate does to its output, as BDDs.
// Here:      the four covers of one gate.
// Not here:  whether they cover those of a signal.
#pragma once

#include "bdd/bdd_cover.h"
#include "toolkit/library_gate.h"

namespace vorel::decomposition {

// Input pin i is BDD variable i. A latch is excited where its function differs from its own value,
// which is no variable, and stable elsewhere; all other gates are two-valued.
bdd::BDDCover covers_of(const toolkit::LibraryGate& gate);

}  // namespace vorel::decomposition
