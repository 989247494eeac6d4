// flow/irreducible.h - encoding conflicts that no new signal can resolve.
// Here:      states with one code that inputs alone lead to from one state.
// Not here:  encoding conflicts (flow/coding_step.h), resolving them (flow/resolution_step.h).
//
// Inputs cannot be made to wait. So whatever signals are inserted, from a state in which the inputs
// of both traces can come they come without an edge of a new signal among them, and both states
// have one code again. If the output that is due in one of them were due only after edges of new
// signals, then these would be due in both, as the code is one, and behind them the states would
// have one code once more. A reduction of concurrency may still make such states unreachable.
#pragma once

#include <vector>

#include "flow/flow_result.h"

namespace vorel::flow {

// At most one for each signal, with the trace to one of the two states. Not all there are: the
// states looked at are those of the conflicts told, and what inputs lead to from them.
std::vector<StgFinding> irreducible_conflicts(const net::Stg& stg, const Coding& coding);

}  // namespace vorel::flow
