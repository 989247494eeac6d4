// flow/flow.h - from an STG to a verified circuit.
// Here:      the steps in their order, the verdict.
// Not here:  reading files, telling results (tools, report).
#pragma once

#include <functional>
#include <string>

#include "flow/flow_request.h"
#include "flow/flow_result.h"
#include "net/net.h"

namespace vorel::flow {

// Told as the run goes. Each may be empty.
struct FlowListener {
  std::function<void(Step)> begin;
  std::function<void(const std::string&)> progress;  // a line, many times in a long step
  std::function<void(const StepRecord&)> end;
};

// The STG is numbered and sorted. Nothing is written, neither to files nor to standard streams, and
// the severity stays: errors and warnings are part of the result.
FlowResult run_flow(net::Stg stg, const FlowRequest& request, const FlowListener& listener = {});

}  // namespace vorel::flow
