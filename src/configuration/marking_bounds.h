// configuration/marking_bounds.h - what the net alone says of the markings of configurations.
// Here:      linear invariants and traps of a merged process as clauses on its places.
// Not here:  finding them (configuration/place_invariants.h, configuration/token_flow.h).
//
// In a prefix an event brings its whole past with it, and unit propagation finds what follows. In a
// merged process a condition has many pasts; that a counter agrees with what it counts, say, or
// that a process is somewhere, takes the solver a long search. Both are redundant clauses on the
// final marking.
#pragma once

#include <functional>
#include <vector>

#include "configuration/place_invariants.h"
#include "sat/cnf_formula.h"

namespace vorel::configuration {

class MarkingBounds {
 public:
  // The effort bounds the steps of looking for invariants, and again for traps.
  MarkingBounds(TokenFlow flow, std::uint64_t effort)
      : flow_{std::move(flow)}, effort_{effort}, invariants_{place_invariants(flow_, effort)} {}

  // Clauses on one literal for each place, true if it is marked; LitFalse for one that never is.
  void assert_invariants(sat::CnfFormula& formula, const sat::Lits& places) const;

  using Encoder = std::function<void(sat::CnfFormula&, const sat::Lits& places)>;
  // Traps that tell markings with a property apart from those that configurations end in [EM-2000].
  // The property is said in clauses on the places of a formula of its own. Markings that it has and
  // the invariants allow are asked for, and each is excluded by a trap that it leaves empty, or by
  // itself; until none is left, or too much was spent for redundant clauses.
  std::vector<TokenFlow::Places> traps_against(const Encoder& property,
                                               const std::vector<bool>& can_be_marked) const;

 private:
  const TokenFlow flow_;
  const std::uint64_t effort_;
  const std::vector<PlaceInvariant> invariants_;
};

}  // namespace vorel::configuration
