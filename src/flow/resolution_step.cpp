#include "flow/resolution_step.h"

#include <algorithm>
#include <utility>

#include "base/messages.h"
#include "flow/unfold_step.h"
#include "net/clone_net.h"
#include "resolution/coefficients.h"
#include "resolution/resolution_engine.h"

namespace vorel::flow {
namespace {

AppliedTransformation as_data(const resolution::AppliedStep& step) {
  return {.is_insertion = step.text.is_insertion,
          .signal = step.signal,
          .parts = step.text.parts,
          .cost = step.text.cost,
          .cost_text = step.text.cost_text};
}

}  // namespace

Resolved resolve(const net::StgPrefix& given, const StepContext& context) {
  Resolved result;
  const ResolutionRequest& request = context.request.resolution;
  base::Params params = context.params;
  params.set("min_cost", 1);
  params.set("concurrent_insertions", request.concurrent_insertions);
  params.set("use_concurrency_reduction", request.with_reductions ? 1 : 0);
  resolution::evaluate_coefficients(request.coefficients, given, params);
  if (base::run_failed()) return result;
  net::StgPrefix prefix = net::clone_prefix(given);
  resolution::ResolutionEngine engine(prefix, params);
  engine.set_deadline(context.deadline);
  engine.run();
  if (base::run_failed()) return result;
  for (const resolution::AppliedStep& step : engine.applied())
    result.resolution.transformations.push_back(as_data(step));
  result.resolution.is_complete = !engine.has_conflicts();
  result.resolution.cores_left = engine.cores().cores.size();
  if (!result.resolution.is_complete && context.deadline.is_over())
    result.limit = base::format_message("conflicts are left after %g seconds",
                                        context.request.limits.max_seconds);
  if (!result.limit.empty()) return result;
  Unfolded unfolded = unfold_again(prefix, context);
  result.prefix = std::move(unfolded.prefix);
  result.limit = std::move(unfolded.limit);
  if (unfolded.fault) base::print_error("the resolved STG is at fault: " + unfolded.fault->message);
  return result;
}

}  // namespace vorel::flow
