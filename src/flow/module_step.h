// flow/module_step.h - the texts of a circuit, and its gates as data.
// Here:      module, models of its gates, testbench, instances, area.
// Not here:  what gates there are (flow/synthesis_step.h), files (tools).
#pragma once

#include <span>

#include "flow/flow_request.h"
#include "flow/flow_result.h"
#include "synthesis/netlist.h"
#include "toolkit/library_gate.h"

namespace vorel::flow {

// The style of the circuit is known; the gates are all of the library. False after an error: names
// cannot stand in Verilog, or the reset is called as something in the circuit is.
bool write_texts(CircuitResult& circuit, synthesis::Netlist netlist, const net::Stg& stg,
                 std::span<const toolkit::LibraryGate> gates, const FlowRequest& request);

}  // namespace vorel::flow
