// flow/resolution_step.h - encoding conflicts resolved.
// Here:      the search for new signals and its result as data.
// Not here:  the search itself (resolution/resolution_engine.h), conflicts as data
//            (flow/coding_step.h), those that no new signal can resolve (flow/irreducible.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "flow/flow_result.h"
#include "flow/step_context.h"
#include "net/process.h"

namespace vorel::flow {

struct Resolved {
  Resolution resolution;
  // Of the STG with what has been done. Without one there was a limit or an error.
  std::optional<net::StgPrefix> prefix;
  std::string limit;  // what was beyond it
};

// The prefix stays as it is. What the cost expressions or the search have wrong is an error.
Resolved resolve(const net::StgPrefix& given, const StepContext& context);

}  // namespace vorel::flow
