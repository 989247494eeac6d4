// flow/unfold_step.h - an STG unfolded, or why that cannot be.
// Here:      the prefix with the initial values of signals, within the limits of the run.
// Not here:  unfolding (unfolder/unfolder.h), the words for what is wrong
//            (flow/unfold_findings.h).
#pragma once

#include <optional>
#include <string>

#include "flow/flow_result.h"
#include "flow/step_context.h"

namespace vorel::flow {

struct Unfolded {
  std::optional<net::StgPrefix> prefix;  // complete
  std::optional<StgFinding> fault;       // without one: not safe, or not consistent
  std::string limit;                     // or what was beyond a limit; else there was an error
};

// The STG is numbered and sorted.
Unfolded unfold(net::Stg stg, const StepContext& context);

// The STG of a prefix as whoever reads its text gets it, unfolded anew. For an STG that has been
// changed: the circuit is made of what stands in the file.
Unfolded unfold_again(const net::Stg& stg, const StepContext& context);

}  // namespace vorel::flow
