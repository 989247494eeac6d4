// decomposition/easy_cost.h - what functions will roughly cost, before any gate is known for them.
// Here:      the estimate by the sizes of diagrams, cheap enough for each step of a search.
// Not here:  literals (bdd/cover_bdd.h), areas of gates (decomposition/gate_library.h).
#pragma once

#include <span>

#include "bdd/bdd.h"

namespace vorel::decomposition {

// Nodes of the functions' diagrams, each counted with its constant. A literal costs nothing.
double easy_cost(std::span<const bdd::Bdd> functions);

}  // namespace vorel::decomposition
