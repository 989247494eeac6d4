// net/initial_values.h - the consistency of an STG, and the initial values of its signals.
// Here:      the pass over an STG prefix that finds the values from the signs of the events.
// Not here:  the structural checks, which follow (net/sanity_checks.h).
#pragma once

#include "net/process.h"

namespace vorel::net {

// Sets each signal's initial_value to 0 or 1 (dummies to unknown_value). Signals must be sorted.
// False after the error "the STG is inconsistent, signal ..." with a trace that shows it. Warns of
// dummies with a sign or a value, of signals whose value nothing fixes, and of dead signals.
bool find_initial_values(StgPrefix& prefix);

}  // namespace vorel::net
