// flow/synthesis_step.h - an STG without encoding conflicts made into a circuit of one style.
// Here:      equations or gates as data, the texts of the module and what belongs to it.
// Not here:  deriving equations (synthesis/equation_search.h), finding gates
//            (decomposition/decomposition_driver.h), which style (flow/circuit_step.h).
#pragma once

#include <optional>
#include <span>

#include "flow/flow_result.h"
#include "flow/step_context.h"
#include "toolkit/library_gate.h"

namespace vorel::flow {

struct Synthesised {
  CircuitResult circuit;                 // neither read back nor verified
  std::optional<net::StgPrefix> mapped;  // with the signals that mapping has inserted, if any
};

// nullopt after an error: the style does not lead to a circuit, or names cannot stand in Verilog.
// The style is not automatic; the gates are all of the library.
std::optional<Synthesised> synthesise(const net::StgPrefix& stg, Style style,
                                      std::span<const toolkit::LibraryGate> gates,
                                      const StepContext& context);

}  // namespace vorel::flow
