// resolution/apply_reduction.h - making a transition of an STG wait for others.
// Here:      the edit of the net, and unfolding anew: what the target waits for now changes the
//            prefix in ways that no edit of it can follow.
// Not here:  which reductions are valid (resolution/reductions.h), places that have become
//            superfluous (resolution/implicit_places.h).
#pragma once

#include "net/process.h"
#include "resolution/transformation.h"

namespace vorel::resolution {

// Replaces events and conditions by those of a finite complete prefix of the net, with all
// correspondents known; the same for any number of processors. Places, transitions and signals stay
// the same objects, with their initial values. False after a reported error, such as a net that is
// not safe; the prefix is of no use then.
bool re_unfold(net::StgPrefix& prefix);

// Makes a prefix that has been read one that signals can be inserted into: with known
// correspondents, numbered causally. False as above.
bool prepare_for_insertions(net::StgPrefix& prefix);

// Adds the place and unfolds anew. The place is called "<u,t>" with one source u, else "CR", and
// made unique. The transitions of the reduction must be those of the prefix; they stay, with other
// numbers perhaps.
bool apply_reduction(net::StgPrefix& prefix, const Reduction& reduction);

}  // namespace vorel::resolution
