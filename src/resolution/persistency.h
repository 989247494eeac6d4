// resolution/persistency.h - candidates after which a signal could lose its excitation.
// Here:      where one event takes the excitation of an output away and another gives it back, so
//            that nobody may delay the latter.
// Not here:  the other conditions on insertions (resolution/insertions.h).
//
// An output or internal signal, excited by one event, may stay excited by another when a choice is
// made against the first. A candidate that delays the second, and has not fired already for the
// first, would make a hazard of that choice. So would one whose new signal is excited as soon as
// some dummies fire that a choice can still prevent. Excitation counts through dummies, as wherever
// a state enables a signal, and a dummy that takes excitation away counts as a signal does.
#pragma once

#include <vector>

#include "net/insert_transition.h"

namespace vorel::resolution {

// Keeps the insertions after which each signal is persistent that was, the new one included. Exact
// for the events of the prefix; behind a cut-off, and where several events give the excitation
// back, too many are removed rather than too few. What insertions keep one by one they keep
// together. They must be valid but for this, and sorted.
void remove_hazards(const net::StgPrefix& prefix, std::vector<net::Insertion>& insertions);

}  // namespace vorel::resolution
