// synthesis/netlist_reset.h - an input that brings a circuit into its initial state.
// Here:      which gates have to obey it, and how.
// Not here:  netlists (synthesis/netlist.h), their text (synthesis/netlist_module.h).
#pragma once

#include <string>

#include "net/net.h"
#include "synthesis/netlist.h"

namespace vorel::synthesis {

// Adds an input that, high while the other inputs have their initial values, leads the circuit to
// its initial state whatever the state before and the delays, and holds it there. It may fall at
// different times for different gates: those that still obey are like slow ones.
//
// As few gates as we find are changed: those that are excited in the initial state, and of those
// that the others do not decide, which have memory or are in a cycle, one after another until all
// are decided. By ternary simulation from an unknown state [BS-1995], the outcome then is the same
// for all delays.
//
// An assignment, a gate with memory and an inverter become one assignment of the same function that
// asks for the reset first. Behind another gate of a library comes one that passes its output on,
// reading a wire which nobody else reads. That keeps the circuit independent of delays: the gate in
// front, once it has fired, is not excited again before the signal has followed, as nothing else
// has seen it fire and an excited gate is not disabled. Only where the STG itself may disable the
// signal this does not hold; such a gate becomes an assignment, too.
//
// False after an error: there is a wire or an instance of that name, or it cannot stand in Verilog.
bool add_reset(Netlist& netlist, const net::Stg& stg, const std::string& reset_input);

}  // namespace vorel::synthesis
