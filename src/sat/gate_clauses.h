// sat/gate_clauses.h - the clauses of gates with up to four inputs, as tables.
// Here:      clause patterns, and which gate outputs the solver may branch on.
// Not here:  gates of any number of inputs (sat/cnf_formula.h), which need no table.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "sat/gate.h"

namespace vorel::sat {

// A clause over the inputs 'a' to 'd' and the output 'o'; a capital letter is the complement.
struct ClausePattern {
  std::string_view literals;
  bool redundant = false;  // implied by the others, but helps propagation
};

struct GateClauses {
  std::span<const ClausePattern> forward;   // the output implies the definition
  std::span<const ClausePattern> backward;  // the definition implies the output
};

// For GateXor of two or three inputs and for the types from GateMaj on.
GateClauses gate_clauses(std::uint32_t code);

// True if the solver never branches on the output of a gate of this code. The codes that say false
// are branched on unless the run restricts branching.
bool never_branches(std::uint32_t code);

}  // namespace vorel::sat
