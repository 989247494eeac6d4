// resolution/insertion_mutex.h - which candidates cannot both be edges of one new signal.
// Here:      the relation as a graph over the candidates.
// Not here:  that edges alternate (resolution/alternation.h).
//
// Two exclude each other exactly if an occurrence of one is concurrent with one of the other, both
// being made, or if the edits overlap: two before one transition with a place in common, or two
// after one.
#pragma once

#include "resolution/occurrence_order.h"
#include "toolkit/bit_graph.h"

namespace vorel::resolution {

// Vertices are the candidates by number. At verbosity 4 the graph is printed.
toolkit::BitGraph insertion_mutex(const Candidates& candidates, const OccurrenceOrder& order);

}  // namespace vorel::resolution
