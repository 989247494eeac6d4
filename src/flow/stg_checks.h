// flow/stg_checks.h - what is wrong with an STG itself, before anything is synthesised of it.
// Here:      dead transitions and signals, deadlock, outputs that are disabled, inputs that would
//            have to be held back.
// Not here:  inconsistency and unsafeness, without which there is no prefix
//            (flow/unfold_findings.h), encoding (flow/coding_step.h).
//
// A signal is disabled where an edge of it can fire, perhaps after dummies only, and cannot any
// more after one edge of another signal (and dummies before it). An output or internal signal that
// an input disables is at fault: no circuit knows in time that it must not change. Disabled by one
// of the circuit's own signals it loses an arbitration that the STG asks for. An input that the
// circuit disables is one that it would have to hold back.
#pragma once

#include <vector>

#include "flow/flow_result.h"
#include "net/process.h"
#include "sat/cnf_formula.h"

namespace vorel::flow {

// The prefix is complete, with initial values. At most one finding for each kind and tuple of
// subjects; faults first. Traces are as short as any, unless the proof of that takes too long.
// Warns if too many dummies lead to an edge to say who disables whom.
std::vector<StgFinding> check_stg(const net::StgPrefix& prefix, const sat::CnfParams& formula);

}  // namespace vorel::flow
