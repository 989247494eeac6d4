// oracle/circuit_states.h - circuits gate by gate, in the environment that their STG describes.
// Here:      what a circuit is, all its states, what goes wrong in them.
// Not here:  circuits of equations (oracle/equation_circuit.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
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
  // Outputs that may disable each other, though the STG does not say so.
  std::set<std::pair<std::string, std::string>> mutexes = {};
};

// What a pin of a gate is connected to: a wire, or without one the constant 0.
struct CircuitPin {
  std::string wire;
  bool is_inverted = false;  // in no time
};

// One pin for each input, in the order of the gate's.
void add_gate(Circuit& circuit, const toolkit::LibraryGate& gate, const std::string& output,
              const std::vector<CircuitPin>& pins);

// Questions about a circuit, each with what is wrong where the answer is no.
enum class CircuitQuestion : std::uint8_t {
  initial_state,  // other initial values than the STG's, or a gate that does not rest, but those of
                  // signals that the STG excites
  conformance,    // a signal changes where the STG does not let it
  hazard,    // a gate is excited and not any more; but outputs may disable each other where the
             // STG has them do so, or where the pair is let through
  progress,  // a signal that the STG lets change, and that gates alone cannot make change; if it
             // depends on an arbiter, nor make another change instead
  deadlock,  // all rests where the STG does not
};
inline constexpr std::size_t circuit_question_count = 5;

struct CircuitFaults {
  // Wires without a driver or with two, signals of other initial values than the STG's, more states
  // than allowed: no question has an answer then.
  std::string obstacle;
  std::array<std::string, circuit_question_count> faults;  // the first of each; empty: none
  // Outputs that disable each other and may; in the order of their names.
  std::set<std::pair<std::string, std::string>> arbiters;

  const std::string& operator[](CircuitQuestion question) const {
    return faults[static_cast<std::size_t>(question)];
  }
};

// An edge of a wire.
struct CircuitEdge {
  std::string wire;
  bool rises = false;
};

// All states of the circuit with the STG as environment and as what outputs and internal signals
// are to conform to; dummies of the STG happen at any time. What does not conform does not happen.
class CircuitStates {
 public:
  CircuitStates(const net::Stg& stg, const StateGraph<net::Stg>& graph, const Values& initial,
                const Circuit& circuit, std::size_t max_states = 200'000);
  ~CircuitStates();

  const CircuitFaults& faults() const;
  // Empty, or why the trace does not show that the answer is no, for this wire. The last edge is
  // the one that goes wrong; for progress and deadlock the state behind it is.
  std::string refute(CircuitQuestion question, const std::string& wire,
                     const std::vector<CircuitEdge>& trace) const;

 private:
  class Explorer;
  std::unique_ptr<Explorer> explorer_;
};

// An obstacle, or all faults with "; " between; empty if there is none.
std::string find_fault(const net::Stg& stg, const StateGraph<net::Stg>& graph,
                       const Values& initial, const Circuit& circuit,
                       std::size_t max_states = 200'000);

}  // namespace vorel::oracle
