// verify/state_questions.h - conformance, hazards and deadlock as literals of one marking.
// Here:      the properties; which gates the STG lets arbitrate.
// Not here:  searching and telling (verify/verifier.h), progress (verify/progress_check.h).
#pragma once

#include <utility>
#include <vector>

#include "verify/marking_formula.h"

namespace vorel::verify {

// Of each gate that drives a signal: it is excited and the STG does not let the signal change.
sat::Lits nonconforming(MarkingFormula& formula);

// All stops, and the STG lets a signal change that a gate drives.
sat::Lit dead(MarkingFormula& formula);

struct HazardLiterals {
  // By gate: it loses its excitation to a change that may not take it.
  sat::Lits hazards;
  // Gates that may lose it to one another, and where the first of them does to the second.
  struct Arbitration {
    WireId loser, winner;
    sat::Lit happens;
  };
  std::vector<Arbitration> arbitrations;
};
HazardLiterals hazards(MarkingFormula& formula);

}  // namespace vorel::verify
