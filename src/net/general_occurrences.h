// net/general_occurrences.h - how often a transition with several sources and targets would occur.
// Here:      the events before and after each occurrence, in a prefix that does not have it yet.
// Not here:  the edit (net/insert_transition.h).
#pragma once

#include <vector>

#include "net/insert_transition.h"

namespace vorel::net {

struct GeneralOccurrence {
  // By source: the event whose token it takes; null for the token from the start.
  std::vector<StgPrefix::Event*> sources;
  std::vector<StgPrefix::Event*> followers;  // the events of the targets that wait for it
};

// One for each set of tokens with the same number, none of them left behind by a cut-off, that some
// run has all of; whether or not an event follows. The insertion must be as insert_transition()
// wants it. Linear but for choices of EventRelations, one for each event of a source if there are
// several.
std::vector<GeneralOccurrence> general_occurrences(const StgPrefix& prefix,
                                                   const General& insertion);

}  // namespace vorel::net
