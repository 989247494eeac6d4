// synthesis/netlist.h - a circuit of gates, ready to be written for other tools.
// Here:      the data; the netlist of equations; initial values.
// Not here:  a reset (synthesis/netlist_reset.h), the text (synthesis/netlist_module.h), the
//            netlist of a mapped circuit (decomposition/mapped_circuit.h).
//
// Each gate takes time and drives one wire, which is called as the signal is if it is one. What
// takes no time, an inverter in front of a pin, belongs to its gate.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <unordered_map>
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
  std::string title;               // a comment, one line
  std::vector<NetlistGate> gates;  // those of a signal together, that which drives it last
  NetlistCell inverter;            // of a mapped circuit
  std::string reset_input;         // empty: none
};

// Of derived equations, in the order that write_verilog asks for; the first alternative of each
// function. The STG has initial values.
Netlist netlist_of(const net::Stg& stg, SynthesisStyle style,
                   std::span<const SignalSolution* const> solutions);

// The value of the function where wires have these values; nullopt where unknown ones decide. A
// wire that is not among them is unknown.
std::optional<bool> value_of(const toolkit::LogicExpr& function,
                             const std::unordered_map<std::string, bool>& values);

// Of all signals, wires and instances; perhaps several times, and empty where there is none.
std::vector<std::string> names_of(const net::Stg& stg, const Netlist& netlist);

}  // namespace vorel::synthesis
