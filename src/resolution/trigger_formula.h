// resolution/trigger_formula.h - how much logic the signals need after a step, as a formula.
// Here:      which signals trigger which, given the candidates that are chosen; their number.
// Not here:  the number of a prefix at hand (resolution/logic_complexity.h).
#pragma once

#include "resolution/candidate_gates.h"
#include "resolution/occurrence_order.h"
#include "sat/core_guided.h"

namespace vorel::resolution {

// What the literals weigh that are true is logic_complexity() of the prefix that the candidates
// chosen make. They are defined in both directions.
//
// The order of old events stays, so a trigger of an event is lost exactly if a chosen occurrence
// comes in between, and the new signal triggers an event exactly if some chosen occurrence comes
// before it and before no event of a signal that comes before it. Only events that have such
// occurrences cost anything.
std::vector<sat::WeightedLit> logic_literals(const OccurrenceOrder& order, bool pwr_of_2,
                                             CandidateGates& gates, sat::ClauseGroup group);

// By output and internal signal in turn: whether the new signal triggers it, which is to say that
// it waits for the new signal somewhere. Defined in both directions.
sat::Lits acknowledgements(const OccurrenceOrder& order, CandidateGates& gates);

}  // namespace vorel::resolution
