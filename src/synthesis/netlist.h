// synthesis/netlist.h - a circuit of gates, ready to be written for other tools.
// Here:      the data; the netlist of equations; initial values; the reset.
// Not here:  the text (synthesis/netlist_module.h), the netlist of a mapped circuit
//            (decomposition/mapped_circuit.h).
//
// Each gate takes time and drives one wire, which is called as the signal is if it is one. What
// takes no time, an inverter in front of a pin, belongs to its gate.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "net/net.h"
#include "synthesis/function_phase.h"
#include "synthesis/signal_solution.h"
#include "toolkit/logic_expr.h"

namespace vorel::synthesis {

// A cell of a library with the names of its ports.
struct NetlistCell {
  std::string name;
  std::string output;
  std::vector<std::string> pins;  // the inputs; feedback is none
  std::string delay_parameter;    // of its model, as Verilog takes it
};

struct NetlistInput {
  std::string wire;                // empty: a constant
  bool constant = false;           // then its value
  std::string inverter = {};       // of zero delay between wire and pin, its name; empty: none
  std::string inverted_wire = {};  // between it and the pin
};

struct NetlistGate {
  bool is_instance() const { return !instance.empty(); }

  std::string output;                // the wire
  toolkit::LogicExpr function;       // what the wire is about to become, in the names of wires
  std::string instance;              // its name; empty: the gate is an assignment
  NetlistCell cell;                  // of an instance
  bool has_memory = false;           // an instance with feedback inside, which its pins do not show
  std::vector<NetlistInput> inputs;  // of an instance, by pin
  std::string comment;               // one line, empty if there is nothing to say
  bool initial_value = false;        // of the wire
};

struct Netlist {
  // The number of the gate that drives the wire; gates.size() if it is an input.
  std::size_t driver(const std::string& wire) const;

  std::string title;               // a comment, one line
  std::vector<NetlistGate> gates;  // those of a signal together, that which drives it last
  NetlistCell inverter;            // of a mapped circuit
  std::string reset_input;         // empty: none
};

// Of derived equations, in the order that write_verilog asks for; the first alternative of each
// function. The STG has initial values.
Netlist netlist_of(const net::Stg& stg, SynthesisStyle style,
                   std::span<const SignalSolution* const> solutions);

// Adds an input that holds the circuit in its initial state while it is high and the inputs have
// their initial values, whatever the state before. False after an error: there is a wire or an
// instance of that name, or it cannot stand in Verilog.
//
// As few gates as we find are changed: those that are excited in the initial state, those with
// memory, and those that break cycles. An assignment and a gate with memory become one assignment
// of the same function that asks for the reset first. Behind another gate of a library comes one
// that passes its output on, reading a wire which nobody else reads. That keeps the circuit
// independent of delays: the gate in front, once it has fired, is not excited again before the
// signal has followed, as nothing else has seen it fire and an excited gate is not disabled. Only
// where the STG itself disables the signal this does not hold; such a gate becomes an assignment.
bool add_reset(Netlist& netlist, const net::Stg& stg, const std::string& reset_input);

}  // namespace vorel::synthesis
