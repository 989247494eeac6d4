// flow/circuit_step.h - the circuit of an STG without encoding conflicts, verified.
// Here:      the styles in their order, which circuit is taken.
// Not here:  one circuit (flow/synthesis_step.h), verification (verify/verifier.h).
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "flow/flow_result.h"
#include "flow/step_context.h"
#include "toolkit/library_gate.h"

namespace vorel::flow {

struct CircuitSearch {
  std::vector<Attempt> attempts;
  // The one that is verified; else one that is left undecided, else the last that is not correct.
  std::optional<CircuitResult> circuit;
  std::optional<net::StgPrefix> mapped;  // its STG, if mapping has inserted signals
  std::vector<std::string> warnings;     // of the circuit that is taken
  bool is_out_of_time = false;           // before all styles were tried
};

// Runs what it is given as one step; the text that it returns is that of the step.
using StepRunner = std::function<void(Step, const std::function<std::string()>&)>;

// The styles that the request asks for, until one is verified. What goes wrong with a style is told
// of the attempt, and is no error of the run.
CircuitSearch find_circuit(const net::StgPrefix& stg, std::span<const toolkit::LibraryGate> gates,
                           const StepContext& context, const StepRunner& run_step);

}  // namespace vorel::flow
