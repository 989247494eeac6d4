// sat/weighted_sum.h - the weights of those literals that are true add up to a number.
// Here:      clauses that say so, where they are few.
// Not here:  sums as binary numbers (sat/integer_circuit.h).
#pragma once

#include <cstdint>
#include <span>

#include "sat/cnf_formula.h"

namespace vorel::sat {

// The weight may be negative.
struct SignedTerm {
  Lit lit;
  std::int64_t weight;
};

// A decision diagram over the literals in their order, with a variable for each sum that some of
// the first ones can have, if the others can still make the total of it [ES-2006]: unit propagation
// finds all that follows. Adds nothing, and says so, where that would take too many variables.
bool assert_weighted_sum(CnfFormula& formula, std::span<const SignedTerm> terms, std::int64_t total,
                         ClauseGroup group);

}  // namespace vorel::sat
