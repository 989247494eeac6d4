#include "flow/step_context.h"

#include "base/default_params.h"
#include "configuration/search_options.h"

namespace vorel::flow {

StepContext::StepContext(const FlowRequest& of, const FlowListener& told)
    : request{of},
      listener{told},
      deadline{of.limits.max_seconds, of.limits.seconds_before},
      params{base::default_params()} {
  params.set("solver", of.solver);
}

sat::CnfParams StepContext::formula() const {
  return configuration::SearchOptions::of(params).encoding.formula;
}

}  // namespace vorel::flow
