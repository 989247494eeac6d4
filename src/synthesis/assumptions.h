// synthesis/assumptions.h - what equations take for granted beyond coding, and where it fails.
// Here:      signals that another one can disable, signals that never change.
// Not here:  conflicts of codes, without which there are no equations (synthesis/support_search.h).
#pragma once

#include <ostream>
#include <vector>

#include "configuration/state_formula.h"
#include "synthesis/function_phase.h"

namespace vorel::synthesis {

// In some reachable state the signal is excited, by way of dummies perhaps, and `by` can fire,
// perhaps behind dummies that it needs, after which the signal is not excited any more.
struct Disabling {
  net::SignalId signal, by;

  auto operator<=>(const Disabling&) const = default;
};

// All pairs of an output or internal signal and another signal, ascending. Incomplete after a
// reported error; not reliable where a prefix has dummy cut-offs.
std::vector<Disabling> find_disablings(
    const configuration::StateStructure<net::StgPrefix>& structure,
    const configuration::EncodingOptions& options);

// The outputs and internal signals without an event, ascending.
SignalList dead_signals(const configuration::StateStructure<net::StgPrefix>& structure);

// A line for each of both, as a diagnostic; nothing where equations are what they seem.
void print_broken_assumptions(std::ostream& stream,
                              const configuration::StateStructure<net::StgPrefix>& structure,
                              const configuration::EncodingOptions& options);

}  // namespace vorel::synthesis
