// flow/resolution_step.h - encoding conflicts resolved, or shown to be there for good.
// Here:      the search for new signals and its result as data, conflicts that inputs alone make.
// Not here:  the search itself (resolution/resolution_engine.h), conflicts as data
//            (flow/coding_step.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "flow/flow_result.h"
#include "flow/step_context.h"
#include "net/process.h"

namespace vorel::flow {

// The conflicts between whose states inputs alone happen, each of them with its first trace. The
// inputs cannot be made to wait, so both states can be reached with no edge of a new signal between
// them, and have one code again. If outputs were due in one of them only after edges of new
// signals, those edges would be due in both, as the code is one, and behind them the states have
// one code once more.
std::vector<StgFinding> irreducible_conflicts(const net::Stg& stg, const Coding& coding);

struct Resolved {
  Resolution resolution;
  // Of the STG with what has been done. Without one there was a limit or an error.
  std::optional<net::StgPrefix> prefix;
  std::string limit;  // what was beyond it
};

// The prefix stays as it is. What the cost expressions or the search have wrong is an error.
Resolved resolve(const net::StgPrefix& given, const StepContext& context);

}  // namespace vorel::flow
