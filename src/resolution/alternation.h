// resolution/alternation.h - the edges of a new signal rise and fall in turn.
// Here:      the clauses on a choice of candidates that say so; the sign of each edge.
// Not here:  that no two edges are concurrent (resolution/insertion_mutex.h), which is taken for
//            granted, so that the value after an event is the initial one and the parity of the
//            chosen occurrences before it.
#pragma once

#include <span>
#include <vector>

#include "resolution/occurrence_order.h"
#include "sat/sums_tree_builder.h"

namespace vorel::resolution {

// Adds: all occurrences of a chosen candidate find the signal at one value, and so do a cut-off and
// its correspondents. Each value is an earlier one and the parity of the occurrences in between, so
// that sets are small however long the prefix is, and recur; occurrences and events behind the same
// occurrences share one. The parities are recorded with the builder, which belongs to the formula
// and must define them before the next solve. Returns, by candidate, the parity of the chosen
// occurrences before each of its own, if it is chosen.
CandidateLits add_alternation(const Candidates& candidates, const OccurrenceOrder& order,
                              const CandidateLits& chosen, sat::SumsTreeBuilder& parities,
                              sat::CnfFormula& formula, sat::ClauseGroup group);

// The sign of each chosen candidate, which must be a solution of the clauses above.
std::vector<net::Sign> edge_signs(const Candidates& candidates, const OccurrenceOrder& order,
                                  std::span<const CandidateId> chosen,
                                  std::uint8_t initial_value = 0);

}  // namespace vorel::resolution
