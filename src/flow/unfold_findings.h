// flow/unfold_findings.h - why an STG has no prefix, as findings.
// Here:      two tokens on one place, edges of a signal that do not alternate.
// Not here:  noticing it (unfolder/unfolder.h, net/initial_values.h).
#pragma once

#include "flow/flow_result.h"
#include "net/initial_values.h"
#include "unfolder/unfolder.h"

namespace vorel::flow {

// Of an unfolder that has stopped because the STG is not safe. The trace ends where the first place
// has two tokens; it is empty if one has them initially.
StgFinding unsafe_finding(const unfolder::Unfolder<net::Stg>& unfolder);

// The trace ends with the edge that finds the value which it would bring about.
StgFinding inconsistent_finding(const net::StgPrefix& prefix,
                                const net::Inconsistency& inconsistency);

}  // namespace vorel::flow
