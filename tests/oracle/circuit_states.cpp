#include "oracle/circuit_states.h"

#include <algorithm>
#include <cassert>
#include <set>

#include "oracle/gate_values.h"

namespace vorel::oracle {
namespace {

using Graph = StateGraph<net::Stg>;

// Wires by number: the signals, without dummies, then what else gates drive.
class Wiring {
 public:
  Wiring(const net::Stg& stg, const Circuit& circuit) : stg_{stg}, circuit_{circuit} {
    for (std::uint32_t s = 0; s < stg.internals_end; ++s) number_of_[stg.signals[s]->name] = s;
    for (const CircuitGate& gate : circuit.gates) number_of_.emplace(gate.output, size());
    inputs_.resize(circuit.gates.size());
    for (std::size_t g = 0; g < circuit.gates.size(); ++g) {
      for (const std::string& wire : circuit.gates[g].inputs) {
        const auto found = number_of_.find(wire);
        if (found == number_of_.end())
          fault_ = wire + " has no driver";
        else
          inputs_[g].push_back(found->second);
      }
    }
    std::vector<std::uint32_t> drivers(size());
    for (const CircuitGate& gate : circuit.gates) ++drivers[number_of_.at(gate.output)];
    for (const auto& [name, wire] : number_of_) {
      const bool is_input = wire < stg.inputs_end;
      if (drivers[wire] != (is_input ? 0 : 1))
        fault_ = name + (drivers[wire] == 0 ? " has no driver" : " has too many drivers");
    }
  }

  const std::string& fault() const { return fault_; }
  std::uint32_t size() const { return static_cast<std::uint32_t>(number_of_.size()); }
  bool is_known(const std::string& wire) const { return number_of_.contains(wire); }
  std::uint32_t number_of(const std::string& wire) const { return number_of_.at(wire); }
  bool is_signal(std::uint32_t wire) const { return wire < stg_.internals_end; }
  std::uint32_t output(std::size_t gate) const { return number_of(circuit_.gates[gate].output); }

  bool is_excited(std::size_t gate, const std::vector<bool>& values) const {
    std::vector<bool> inputs;
    for (const std::uint32_t wire : inputs_[gate]) inputs.push_back(values[wire]);
    const bool now = values[output(gate)];
    return circuit_.gates[gate].next(inputs, now) != now;
  }

 private:
  const net::Stg& stg_;
  const Circuit& circuit_;
  std::map<std::string, std::uint32_t> number_of_;
  std::vector<std::vector<std::uint32_t>> inputs_;  // by gate
  std::string fault_;
};

struct CircuitState {
  std::uint32_t environment;  // state of the graph
  std::vector<bool> others;   // the wires that are no signals
  auto operator<=>(const CircuitState&) const = default;
};

}  // namespace

class CircuitStates::Explorer {
 public:
  Explorer(const net::Stg& stg, const Graph& graph, const Values& initial, const Circuit& circuit,
           std::size_t max_states)
      : stg_{stg}, graph_{graph}, circuit_{circuit}, max_states_{max_states}, wires_{stg, circuit} {
    for (const auto& state : graph.states) codes_.push_back(code_of(state, initial));
    for (std::size_t g = 0; g < circuit.gates.size(); ++g) outputs_.push_back(wires_.output(g));
    faults.obstacle = wires_.fault();
    if (!faults.obstacle.empty()) return;
    CircuitState first{0, std::vector<bool>(wires_.size() - stg_.internals_end)};
    set_initial_values(first);
    if (!faults.obstacle.empty()) return;
    find_excited_initially(first);
    number_of(first);
    for (std::uint32_t i = 0; i < states_.size() && states_.size() <= max_states_; ++i) visit(i);
    if (states_.size() > max_states_)
      faults.obstacle = "too many states";
    else
      find_missing_outputs();
  }

  std::string refute(CircuitQuestion question, const std::string& wire,
                     const std::vector<CircuitEdge>& trace) const {
    const std::size_t gate = gate_of(wire);
    if (question != CircuitQuestion::deadlock && gate == outputs_.size()) return "no gate's wire";
    const bool ends_before_fault =
        question == CircuitQuestion::conformance || question == CircuitQuestion::hazard;
    if (ends_before_fault && trace.empty()) return "an empty trace";
    std::set<CircuitState> states{states_[0]};
    for (std::size_t i = 0; i + (ends_before_fault ? 1 : 0) < trace.size(); ++i) {
      states = after(states, trace[i]);
      if (states.empty()) return trace[i].wire + " cannot change";
    }
    const auto shows_it = [&](const CircuitState& state) {
      switch (question) {
        case CircuitQuestion::initial_state:
          return trace.empty() && is_excited(gate, state) &&
                 !(wires_.is_signal(outputs_[gate]) && is_due(gate, state));
        case CircuitQuestion::conformance:
          return gate_of(trace.back().wire) == gate && is_excited(gate, state) &&
                 values_in(state)[outputs_[gate]] != trace.back().rises && !is_due(gate, state);
        case CircuitQuestion::hazard:
          return disables(state, trace.back(), gate);
        case CircuitQuestion::progress:
          return is_due(gate, state) && !states_leading_to(gate)[number_of_.at(state)];
        case CircuitQuestion::deadlock:
          return is_stuck(state);
      }
      return false;
    };
    states = with_dummies(states);
    return std::ranges::any_of(states, shows_it) ? "" : "nothing is wrong behind the trace";
  }

  CircuitFaults faults;

 private:
  struct GateArc {
    std::size_t gate;  // one more than there are for a dummy
    std::uint32_t source;
  };

  void found(CircuitQuestion question, const std::string& text) {
    std::string& fault = faults.faults[static_cast<std::size_t>(question)];
    if (fault.empty()) fault = text;
  }

  std::vector<bool> values_in(const CircuitState& state) const {
    const Values& code = codes_[state.environment];
    std::vector<bool> values(code.begin(), code.begin() + stg_.internals_end);
    values.insert(values.end(), state.others.begin(), state.others.end());
    return values;
  }

  bool is_excited(std::size_t gate, const CircuitState& state) const {
    return wires_.is_excited(gate, values_in(state));
  }

  // Of a gate that drives a signal: the STG lets it change.
  bool is_due(std::size_t gate, const CircuitState& state) const {
    return wires_.is_signal(outputs_[gate]) &&
           !after_edge(state.environment, outputs_[gate]).empty();
  }

  // The number of gates if none drives the wire.
  std::size_t gate_of(const std::string& wire) const {
    return static_cast<std::size_t>(std::ranges::find(circuit_.gates, wire, &CircuitGate::output) -
                                    circuit_.gates.begin());
  }

  void set_initial_values(CircuitState& first) {
    const auto given = [this](std::size_t gate) {
      return circuit_.initial.find(circuit_.gates[gate].output);
    };
    const auto other = [&](std::size_t gate) {
      return first.others[outputs_[gate] - stg_.internals_end];
    };
    for (const auto& [name, value] : circuit_.initial) {
      for (std::uint32_t s = 0; s < stg_.internals_end; ++s)
        if (stg_.signals[s]->name == name && (codes_[0][s] != 0) != value)
          faults.obstacle = name + " has another initial value";
    }
    for (std::size_t g = 0; g < outputs_.size(); ++g)
      if (!wires_.is_signal(outputs_[g]) && given(g) != circuit_.initial.end())
        other(g) = given(g)->second;
    // As often as the longest chain of gates is long.
    for (std::size_t round = 0; round < outputs_.size(); ++round)
      for (std::size_t g = 0; g < outputs_.size(); ++g)
        if (!wires_.is_signal(outputs_[g]) && given(g) == circuit_.initial.end() &&
            is_excited(g, first))
          other(g).flip();
  }

  void find_excited_initially(const CircuitState& first) {
    for (std::size_t g = 0; g < outputs_.size(); ++g)
      if (is_excited(g, first) && !is_due(g, first) &&
          !circuit_.declared.contains(circuit_.gates[g].output))
        found(CircuitQuestion::initial_state,
              circuit_.gates[g].output + " is not at rest initially");
  }

  std::uint32_t number_of(const CircuitState& state) {
    const auto [found, is_new] =
        number_of_.emplace(state, static_cast<std::uint32_t>(states_.size()));
    if (is_new) {
      states_.push_back(state);
      arcs_to_.emplace_back();
    }
    return found->second;
  }

  // States of the environment after an edge of the signal, dummies before it perhaps.
  std::set<std::uint32_t> after_edge(std::uint32_t environment, std::uint32_t signal) const {
    std::set<std::uint32_t> result;
    for (const auto& [state, steps] : after_dummies(graph_, environment))
      for (const auto& arc : graph_.states[state].arcs)
        if (arc.transition->signal->index == signal) result.insert(arc.target);
    return result;
  }

  std::set<CircuitState> with_dummies(const std::set<CircuitState>& states) const {
    std::set<CircuitState> result;
    for (const CircuitState& state : states)
      for (const auto& [environment, steps] : after_dummies(graph_, state.environment))
        result.insert({environment, state.others});
    return result;
  }

  std::vector<CircuitState> after_change(const CircuitState& state, std::uint32_t wire) const {
    std::vector<CircuitState> result;
    if (wires_.is_signal(wire)) {
      for (const std::uint32_t target : after_edge(state.environment, wire))
        result.push_back({target, state.others});
    } else {
      result.push_back(state);
      result.back().others[wire - stg_.internals_end].flip();
    }
    return result;
  }

  // Where circuit and environment let the edge happen.
  std::vector<CircuitState> after(const CircuitState& state, const CircuitEdge& edge) const {
    if (!wires_.is_known(edge.wire)) return {};
    const std::uint32_t wire = wires_.number_of(edge.wire);
    const std::size_t gate = gate_of(edge.wire);
    const bool waits = gate < outputs_.size() && !is_excited(gate, state);
    if (waits || values_in(state)[wire] == edge.rises) return {};
    return after_change(state, wire);
  }

  std::set<CircuitState> after(const std::set<CircuitState>& states,
                               const CircuitEdge& edge) const {
    std::set<CircuitState> result;
    for (const CircuitState& state : states)
      for (const CircuitState& next : after(state, edge)) result.insert(next);
    return result;
  }

  bool disables(const CircuitState& state, const CircuitEdge& edge, std::size_t victim) const {
    if (!is_excited(victim, state) || gate_of(edge.wire) == victim) return false;
    return std::ranges::any_of(after(state, edge), [&](const CircuitState& next) {
      return !is_excited(victim, next) && !is_let_through(state, gate_of(edge.wire), next, victim);
    });
  }

  void visit(std::uint32_t number) {
    const CircuitState state = states_[number];
    std::vector<std::size_t> excited;
    for (std::size_t g = 0; g < outputs_.size(); ++g)
      if (is_excited(g, state)) excited.push_back(g);
    for (const std::size_t gate : excited) {
      const auto targets = after_change(state, outputs_[gate]);
      const std::string& name = circuit_.gates[gate].output;
      if (targets.empty())
        found(CircuitQuestion::conformance, name + " changes where the STG does not allow it");
      for (const CircuitState& next : targets) {
        arcs_to_[number_of(next)].push_back({gate, number});
        find_disabled(state, excited, gate, name, next);
      }
    }
    for (const auto& arc : graph_.states[state.environment].arcs) {
      if (is_driven(*arc.transition->signal)) continue;
      const CircuitState next{arc.target, state.others};
      const std::uint32_t target = number_of(next);
      if (arc.transition->signal->is_dummy()) arcs_to_[target].push_back({outputs_.size(), number});
      find_disabled(state, excited, outputs_.size(), arc.transition->name, next);
    }
    if (is_stuck(state)) found(CircuitQuestion::deadlock, "all rests where the STG does not");
  }

  // Of the gates that were excited before the change of one of them, or of an input.
  void find_disabled(const CircuitState& before, const std::vector<std::size_t>& excited,
                     std::size_t changed, const std::string& name, const CircuitState& after) {
    for (const std::size_t gate : excited) {
      if (gate == changed || is_excited(gate, after)) continue;
      const std::string& victim = circuit_.gates[gate].output;
      if (!is_let_through(before, changed, after, gate))
        found(CircuitQuestion::hazard, victim + " is disabled by " + name);
      else
        faults.arbiters.insert(std::minmax(victim, circuit_.gates[changed].output));
    }
  }

  // One output disables another, and that is a choice: so it is declared, or so the STG has it.
  bool is_let_through(const CircuitState& before, std::size_t changed, const CircuitState& after,
                      std::size_t victim) const {
    if (changed == outputs_.size()) return false;
    const std::string &a = circuit_.gates[changed].output, &b = circuit_.gates[victim].output;
    if (circuit_.mutexes.contains({a, b}) || circuit_.mutexes.contains({b, a})) return true;
    return is_due(changed, before) && is_due(victim, before) && !is_due(victim, after);
  }

  // Nothing can happen, but the STG goes on. A gate that is about to change where it must not has
  // not come to rest.
  bool is_stuck(const CircuitState& state) const {
    const auto& arcs = graph_.states[state.environment].arcs;
    const auto is_possible = [&](const auto& arc) { return !is_driven(*arc.transition->signal); };
    if (arcs.empty() || std::ranges::any_of(arcs, is_possible)) return false;
    for (std::size_t g = 0; g < outputs_.size(); ++g)
      if (is_excited(g, state)) return false;
    return true;
  }
  // By the circuit.
  static bool is_driven(const net::Signal& signal) {
    return signal.kind == net::SignalKind::output || signal.kind == net::SignalKind::internal;
  }

  // An output that disables another and is disabled by it, or something that depends on one.
  bool waits_for_arbiter(std::size_t gate) const {
    std::set<std::string> waiting;
    for (const auto& [a, b] : faults.arbiters) waiting.insert({a, b});
    for (std::size_t size = 0; size != waiting.size();) {
      size = waiting.size();
      for (const CircuitGate& next : circuit_.gates)
        if (std::ranges::any_of(next.inputs,
                                [&](const auto& wire) { return waiting.contains(wire); }))
          waiting.insert(next.output);
    }
    return waiting.contains(circuit_.gates[gate].output);
  }

  // From each state in which the STG lets the signal change gates alone must be able to change it,
  // or, if it waits for an arbiter, to choose another that takes its place.
  void find_missing_outputs() {
    for (std::size_t gate = 0; gate < outputs_.size(); ++gate) {
      if (!wires_.is_signal(outputs_[gate])) continue;
      const std::vector<bool> can_change = states_leading_to(gate);
      for (std::size_t i = 0; i < states_.size(); ++i)
        if (!can_change[i] && is_due(gate, states_[i]))
          found(CircuitQuestion::progress, circuit_.gates[gate].output + " never changes");
    }
  }

  std::vector<bool> states_leading_to(std::size_t gate) const {
    std::vector<bool> result(states_.size());
    std::vector<std::uint32_t> open;
    const auto add = [&](std::uint32_t state) {
      if (!result[state]) open.push_back(state);
      result[state] = true;
    };
    for (const auto& arcs : arcs_to_)
      for (const GateArc& arc : arcs)
        if (arc.gate == gate) add(arc.source);
    for (std::uint32_t i = 0; i < states_.size() && waits_for_arbiter(gate); ++i)
      if (!is_due(gate, states_[i])) add(i);
    while (!open.empty()) {
      const std::uint32_t state = open.back();
      open.pop_back();
      for (const GateArc& arc : arcs_to_[state]) add(arc.source);
    }
    return result;
  }

  const net::Stg& stg_;
  const Graph& graph_;
  const Circuit& circuit_;
  const std::size_t max_states_;
  const Wiring wires_;
  std::vector<std::uint32_t> outputs_;  // by gate
  std::vector<Values> codes_;           // by state of the graph
  std::vector<CircuitState> states_;
  std::map<CircuitState, std::uint32_t> number_of_;
  std::vector<std::vector<GateArc>> arcs_to_;  // by state
};

void add_gate(Circuit& circuit, const toolkit::LibraryGate& gate, const std::string& output,
              const std::vector<CircuitPin>& pins) {
  assert(pins.size() == gate.input_count());
  std::vector<std::string> inputs;
  for (const CircuitPin& pin : pins)
    if (!pin.wire.empty()) inputs.push_back(pin.wire);
  circuit.gates.push_back({output, inputs, [gate, pins](const std::vector<bool>& values, bool now) {
                             std::vector<Word> at_pins;  // one case, in the lowest bit
                             std::size_t wired = 0;
                             for (const CircuitPin& pin : pins) {
                               const bool value = !pin.wire.empty() && values[wired++];
                               at_pins.push_back(value != pin.is_inverted ? 1 : 0);
                             }
                             return (next_output(gate, at_pins, now ? 1 : 0) & 1u) != 0;
                           }});
}

CircuitStates::CircuitStates(const net::Stg& stg, const Graph& graph, const Values& initial,
                             const Circuit& circuit, std::size_t max_states)
    : explorer_{std::make_unique<Explorer>(stg, graph, initial, circuit, max_states)} {}
CircuitStates::~CircuitStates() = default;

const CircuitFaults& CircuitStates::faults() const { return explorer_->faults; }

std::string CircuitStates::refute(CircuitQuestion question, const std::string& wire,
                                  const std::vector<CircuitEdge>& trace) const {
  return explorer_->refute(question, wire, trace);
}

std::string find_fault(const net::Stg& stg, const Graph& graph, const Values& initial,
                       const Circuit& circuit, std::size_t max_states) {
  const CircuitStates states(stg, graph, initial, circuit, max_states);
  std::string text = states.faults().obstacle;
  for (const std::string& fault : states.faults().faults)
    if (!fault.empty()) text += (text.empty() ? "" : "; ") + fault;
  return text;
}

}  // namespace vorel::oracle
