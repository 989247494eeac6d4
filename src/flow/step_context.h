// flow/step_context.h - what all steps of a run share.
// Here:      the request, how long the run may still take, the options of searches.
// Not here:  what the steps find (flow/flow_result.h).
#pragma once

#include "base/deadline.h"
#include "base/params.h"
#include "flow/flow.h"
#include "sat/cnf_formula.h"

namespace vorel::flow {

// Refers to the request and the listener.
struct StepContext {
  StepContext(const FlowRequest& of, const FlowListener& told);

  sat::CnfParams formula() const;
  void tell_progress(const std::string& line) const {
    if (listener.progress) listener.progress(line);
  }

  const FlowRequest& request;
  const FlowListener& listener;
  const base::Deadline deadline;  // from now
  base::Params params;            // of searches, as the program of a single step has them
};

}  // namespace vorel::flow
