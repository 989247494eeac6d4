// resolution/occurrence_text.h - the occurrences of candidates in words.
#pragma once

#include <ostream>
#include <string>

#include "resolution/candidates.h"

namespace vorel::resolution {

// "Instance of CANDIDATE: " and what tells it from the others: the conditions it consumes as
// "c3(p)", or the events that it follows as "e5(t)", of which a token at the start has none.
std::string to_text(const Candidates& candidates, OccurrenceId id);

// All of all candidates, a line each under a line for the candidate.
void print_occurrences(std::ostream& stream, const Candidates& candidates);

}  // namespace vorel::resolution
