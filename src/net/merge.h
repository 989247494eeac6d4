// net/merge.h - from a prefix to its merged process.
// Here:      merging conditions by place and occurrence depth, and events by what is left of them.
// Not here:  the depths (net/occurrence_depth.h).
//
// Events of one transition whose presets and postsets merge into equal sets become one mp-event,
// which is a cut-off if all of them are. Mp-conditions are numbered by place and depth, mp-events
// by their first events. Conditions left out after cut-offs are merged, too.
#pragma once

#include "net/process.h"

namespace vorel::net {

// The result owns a net of its own, with the numbers of the net of the prefix. The prefix must have
// passed the structural checks (net/sanity_checks.h), or come from the unfolder. Apart from the
// depths, time is linear in the number of links.
template <class N>
MergedProcessOf<N> merge(const PrefixOf<N>& prefix);

}  // namespace vorel::net
