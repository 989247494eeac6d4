// oracle/circuit_states.h - circuits gate by gate, in the environment that their STG describes.
// Here:      what a circuit is, all its states, what goes wrong in them.
// Not here:  circuits of equations (oracle/equation_circuit.h).
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "oracle/coding.h"
#include "toolkit/library_gate.h"

namespace vorel::oracle {

// Wires have names; those of signals are the signals.
struct CircuitGate {
  std::string output;
  std::vector<std::string> inputs;
  // What the output is about to become, by the values of the inputs and its own. Takes any time;
  // inverters that are to take none belong to the function.
  std::function<bool(const std::vector<bool>& inputs, bool output)> next;
};

struct Circuit {
  std::vector<CircuitGate> gates;
  // Signals have those of the STG, other wires without one the values at which their gates rest.
  std::map<std::string, bool> initial;
  // Wires that may be excited initially, as signals may.
  std::set<std::string> declared = {};
};

// What a pin of a gate is connected to: a wire, or without one the constant 0.
struct CircuitPin {
  std::string wire;
  bool is_inverted = false;  // in no time
};

// One pin for each input, in the order of the gate's. An inverted output is that of an inverter,
// and the gate drives a wire of its own, OUTPUT'.
void add_gate(Circuit& circuit, const toolkit::LibraryGate& gate, const std::string& output,
              const std::vector<CircuitPin>& pins, bool is_inverted = false);

// Explores the circuit with the STG as environment and as what outputs and internal signals are to
// conform to; dummies of the STG happen at any time. Empty, or what goes wrong first: wires without
// a driver or with two, other initial values than the STG's, a gate that is not at rest initially
// (but those of signals and what is declared), a gate that is excited and not any more, a signal
// that changes where the STG does not let it, one that the STG lets change and no gates can make
// change without another input, or more states than allowed.
std::string find_fault(const net::Stg& stg, const StateGraph<net::Stg>& graph,
                       const Values& initial, const Circuit& circuit,
                       std::size_t max_states = 200'000);

}  // namespace vorel::oracle
