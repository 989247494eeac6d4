// net/sanity_checks.h - the structural checks that every input passes between reading and the run.
// Here:      checks on the process itself; some refuse it, the others warn.
// Not here:  the consistency of an STG (net/initial_values.h).
// The "places" and "transitions" of the messages are conditions "cI" and events "eI".
#pragma once

#include "net/process.h"

namespace vorel::net {

// Runs all checks, in order, whatever the earlier ones said. False when the process is refused:
// without an error if its links contradict each other; after an error if a prefix has a causal
// cycle, an event disagrees with its transition, the occurrences of a place in a merged process are
// not in order (net/occurrence_order.h), the initial marking is not safe or an event has an empty
// preset. Linear in the size of the process, but for sorting presets, postsets and mp-conditions.
// What passes satisfies check() (net/check.h).
template <Process P>
bool passes_sanity_checks(const P& process);

}  // namespace vorel::net
