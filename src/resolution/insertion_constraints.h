// resolution/insertion_constraints.h - which sets of candidates are the edges of one new signal.
// Here:      the clauses that say so, all together.
// Not here:  what the signal is good for (resolution/core_conditions.h).
#pragma once

#include "resolution/alternation.h"

namespace vorel::resolution {

// Adds: no two chosen candidates exclude each other, and the chosen ones alternate. The former is
// said for cliques that cover the relation; how many there are is printed at verbosity 4. Returns
// what add_alternation() does.
CandidateLits add_insertion_constraints(const Candidates& candidates, const OccurrenceOrder& order,
                                        const CandidateLits& chosen, sat::SumsTreeBuilder& parities,
                                        sat::CnfFormula& formula, sat::ClauseGroup group);

}  // namespace vorel::resolution
