// flow/flow_request.h - what a run of the flow is asked to do.
// Here:      the request as plain data.
// Not here:  where it comes from (tools/flow_arguments.h), what is done (flow/flow.h).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "resolution/coefficients.h"
#include "synthesis/module_options.h"

namespace vorel::flow {

// How the circuit is made. `automatic` is the first that leads to a circuit that is correct:
// mapped, standard-C, complex gates.
enum class Style : std::uint8_t { automatic, complex_gate, generalised_c, standard_c, mapped };

struct ResolutionRequest {
  bool is_wanted = true;                   // else encoding conflicts end the run
  std::int32_t concurrent_insertions = 1;  // which edges are candidates, as -p of vorel
  bool with_reductions = false;            // concurrency may be reduced, too
  resolution::CoefficientTexts coefficients;
};

struct FlowLimits {
  std::uint64_t max_events = 0;     // of any prefix; 0: none
  double max_seconds = 0;           // of the whole run, looked at within and between steps; 0: none
  double seconds_before = 0;        // of these, what was spent before the flow, on reading
  double max_mapping_seconds = 30;  // of mapping, where other styles can follow; 0: none
};

// "NAME: PROPERTY", from a file of properties.
struct NamedProperty {
  std::string name;
  std::string text;
  std::size_t line = 0;  // of its name, counted from 1
};

struct FlowRequest {
  std::string stg_name;  // of the file, as messages call it
  Style style = Style::automatic;
  std::string library;  // of gates; empty: the built-in one
  ResolutionRequest resolution;
  std::vector<NamedProperty> properties;
  synthesis::ModuleOptions module;
  bool wants_testbench = false;
  FlowLimits limits;
  std::uint32_t threads = 1;  // that unfold; the answers are the same for any number
  std::int32_t solver = 1;    // 0 or 1 (sat/cnf_formula.h)
};

}  // namespace vorel::flow
