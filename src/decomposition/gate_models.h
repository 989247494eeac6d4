// decomposition/gate_models.h - the gates of a library as Verilog modules, for simulation.
// Here:      one module for each gate.
// Not here:  netlists.
//
// A module has the name and the pins of its gate; the feedback of a latch is no port. The output
// follows its function after the parameter `delay`: 0 for inverters, since those at the inputs of
// gates in a netlist take no time, 1 for all others. Where a pin is called delay, the parameter is
// delay1. A latch starts unknown unless its inputs decide.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "synthesis/netlist.h"
#include "toolkit/library_gate.h"

namespace vorel::decomposition {

// False after an error: the name of the gate or of a pin cannot stand in Verilog.
bool names_can_stand_in_verilog(const toolkit::LibraryGate& gate);

// As Verilog takes it.
std::string delay_parameter(const toolkit::LibraryGate& gate);

// Of the gates that a netlist may use. False after an error, with nothing written: a name cannot
// stand in Verilog.
bool write_gate_models(std::ostream& stream, std::span<const toolkit::LibraryGate> gates);

// Of the cells that the netlist has instances of, in the order of the library; nothing if there are
// none. `module_name` is that of the netlist. The names can stand in Verilog.
void write_gate_models_of(std::ostream& stream, const synthesis::Netlist& netlist,
                          std::string_view module_name,
                          std::span<const toolkit::LibraryGate> gates);

}  // namespace vorel::decomposition
