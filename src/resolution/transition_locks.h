// resolution/transition_locks.h - which transitions alternate strictly, and which can wait together
// for some of them.
// Here:      the relation between transitions, insertions of tag General that it suggests.
// Not here:  signals (resolution/signal_locks.h), other insertions (resolution/insertions.h).
#pragma once

#include <span>
#include <vector>

#include "net/process.h"
#include "resolution/relation_graph.h"
#include "resolution/transformation.h"

namespace vorel::resolution {

using TransitionRelation = RelationGraph<net::StgTransition>;

// All transitions of the net. From a to b: in each run of the unfolding that the prefix stands for
// the events of a and b take turns, and a is the first. So it is in the prefix, and each cut-off
// has as many more events of a than its correspondents as of b. Under-approximation: others may
// alternate, too. Dead transitions are in no relation, and none are where a correspondent is not
// known. The events must be numbered causally. At verbosity 6 tells the graph.
TransitionRelation transition_lock_relation(const net::StgPrefix& prefix);

// The insertions with these sources whose targets are maximal: outputs and internal signals, each
// locked with each source, the new transition having to come after the same edge of the source for
// all of them. A source has a star where the targets come first. `sources`: by index, at least one.
// Left out are trivial ones, which an arc between two transitions, or none, does as well, and what
// comes after the first 100 sets of targets, as there can be exponentially many. At verbosity 5
// tells the sets of targets, at 6 and 7 the relations that they come from.
std::vector<net::Insertion> max_destination_cliques(
    std::span<const net::StgTransition* const> sources, const TransitionRelation& locks);

}  // namespace vorel::resolution
