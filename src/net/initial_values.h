// net/initial_values.h - the consistency of an STG, and the initial values of its signals.
// Here:      the pass over an STG prefix that finds the values from the signs of the events.
// Not here:  the structural checks, which follow (net/sanity_checks.h).
#pragma once

#include <optional>
#include <vector>

#include "net/process.h"

namespace vorel::net {

// Edges of a signal that do not alternate, or do not fit its initial value.
struct Inconsistency {
  const Signal* signal;
  // In an order in which they fire; the last is an edge of the signal, which finds the value that
  // it would bring about in this run or after another one.
  std::vector<const StgPrefix::Event*> trace;
};

// Sets each signal's initial_value to 0 or 1 (dummies to unknown_value). Signals must be sorted.
// Warns of dummies with a sign or a value, of signals whose value nothing fixes, and of dead
// signals. With an inconsistency, which is the result, some values stay unknown.
std::optional<Inconsistency> settle_initial_values(StgPrefix& prefix);

// The same. False after the error "the STG is inconsistent, signal ..." with the trace.
bool find_initial_values(StgPrefix& prefix);

}  // namespace vorel::net
