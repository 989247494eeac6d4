// flow/verdict.h - what a run comes to.
// Here:      how runs end; the verdict, its sentence and what to do next.
// Not here:  the steps (flow/flow.cpp).
#pragma once

#include <string>

#include "flow/flow_request.h"
#include "flow/flow_result.h"

namespace vorel::flow {

enum class Ending : std::uint8_t {
  circuit,             // all steps were taken; the result tells how it stands with the circuit
  error,               // told as an error
  faulty_stg,          // told as a finding
  limit,               // a step did not come to its end
  conflicts_unwanted,  // there are encoding conflicts, and they were not to be resolved
  conflicts_left,      // some could not be resolved
};

// Sets the verdict, the sentence and the hint. `reason` is what was beyond a limit.
void conclude(Ending ending, const FlowRequest& request, const std::string& reason,
              FlowResult& result);

}  // namespace vorel::flow
