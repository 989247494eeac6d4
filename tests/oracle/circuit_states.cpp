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
  bool is_signal(std::uint32_t wire) const { return wire < stg_.internals_end; }
  std::uint32_t output(std::size_t gate) const {
    return number_of_.at(circuit_.gates[gate].output);
  }

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

class Explorer {
 public:
  Explorer(const net::Stg& stg, const Graph& graph, const Values& initial, const Circuit& circuit,
           std::size_t max_states)
      : stg_{stg}, graph_{graph}, circuit_{circuit}, max_states_{max_states}, wires_{stg, circuit} {
    for (const auto& state : graph.states) codes_.push_back(code_of(state, initial));
    for (std::size_t g = 0; g < circuit.gates.size(); ++g) outputs_.push_back(wires_.output(g));
  }

  std::string run() {
    if (!wires_.fault().empty()) return wires_.fault();
    CircuitState first{0, std::vector<bool>(wires_.size() - stg_.internals_end)};
    std::string fault = set_initial_values(first);
    if (!fault.empty()) return fault;
    number_of(first);
    for (std::uint32_t i = 0; i < states_.size() && fault.empty(); ++i) fault = visit(i);
    return fault.empty() ? missing_output() : fault;
  }

 private:
  struct GateArc {
    std::size_t gate;
    std::uint32_t source;
  };

  std::vector<bool> values_in(const CircuitState& state) const {
    const Values& code = codes_[state.environment];
    std::vector<bool> values(code.begin(), code.begin() + stg_.internals_end);
    values.insert(values.end(), state.others.begin(), state.others.end());
    return values;
  }

  bool is_excited(std::size_t gate, const CircuitState& state) const {
    return wires_.is_excited(gate, values_in(state));
  }

  std::string set_initial_values(CircuitState& first) const {
    const auto given = [this](std::size_t gate) {
      return circuit_.initial.find(circuit_.gates[gate].output);
    };
    const auto other = [&](std::size_t gate) {
      return first.others[outputs_[gate] - stg_.internals_end];
    };
    for (const auto& [name, value] : circuit_.initial) {
      for (std::uint32_t s = 0; s < stg_.internals_end; ++s)
        if (stg_.signals[s]->name == name && (codes_[0][s] != 0) != value)
          return name + " has another initial value";
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
    for (std::size_t g = 0; g < outputs_.size(); ++g)
      if (!wires_.is_signal(outputs_[g]) && is_excited(g, first) &&
          !circuit_.declared.contains(circuit_.gates[g].output))
        return circuit_.gates[g].output + " is not at rest initially";
    return "";
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
    std::set<std::uint32_t> result, seen{environment};
    std::vector<std::uint32_t> open{environment};
    while (!open.empty()) {
      const std::uint32_t state = open.back();
      open.pop_back();
      for (const auto& arc : graph_.states[state].arcs) {
        if (arc.transition->signal->index == signal) result.insert(arc.target);
        if (arc.transition->signal->is_dummy() && seen.insert(arc.target).second)
          open.push_back(arc.target);
      }
    }
    return result;
  }

  std::vector<CircuitState> after_gate(const CircuitState& state, std::size_t gate) const {
    std::vector<CircuitState> result;
    const std::uint32_t wire = outputs_[gate];
    if (wires_.is_signal(wire)) {
      for (const std::uint32_t target : after_edge(state.environment, wire))
        result.push_back({target, state.others});
    } else {
      result.push_back(state);
      result.back().others[wire - stg_.internals_end].flip();
    }
    return result;
  }

  std::string visit(std::uint32_t number) {
    const CircuitState state = states_[number];
    std::vector<std::size_t> excited;
    for (std::size_t g = 0; g < outputs_.size(); ++g)
      if (is_excited(g, state)) excited.push_back(g);
    for (const std::size_t gate : excited) {
      const auto targets = after_gate(state, gate);
      const std::string& name = circuit_.gates[gate].output;
      if (targets.empty()) return name + " changes where the STG does not allow it";
      for (const CircuitState& next : targets) {
        arcs_to_[number_of(next)].push_back({gate, number});
        const std::string victim = disabled_in(next, excited, gate);
        if (!victim.empty()) return victim + " is disabled by " + name;
      }
    }
    for (const auto& arc : graph_.states[state.environment].arcs) {
      const net::SignalKind kind = arc.transition->signal->kind;
      if (kind != net::SignalKind::input && kind != net::SignalKind::dummy) continue;
      const CircuitState next{arc.target, state.others};
      number_of(next);
      const std::string victim = disabled_in(next, excited, outputs_.size());
      if (!victim.empty()) return victim + " is disabled by " + arc.transition->name;
    }
    return states_.size() > max_states_ ? "too many states" : "";
  }

  // Of the gates that were excited before the change of one of them, or of none.
  std::string disabled_in(const CircuitState& after, const std::vector<std::size_t>& excited,
                          std::size_t changed) const {
    for (const std::size_t gate : excited)
      if (gate != changed && !is_excited(gate, after)) return circuit_.gates[gate].output;
    return "";
  }

  // From each state in which the STG lets the signal change gates alone must be able to change it.
  std::string missing_output() const {
    for (std::size_t gate = 0; gate < outputs_.size(); ++gate) {
      if (!wires_.is_signal(outputs_[gate])) continue;
      const std::vector<bool> can_change = states_leading_to(gate);
      for (std::size_t i = 0; i < states_.size(); ++i)
        if (!can_change[i] && !after_edge(states_[i].environment, outputs_[gate]).empty())
          return circuit_.gates[gate].output + " never changes";
    }
    return "";
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

}  // namespace

void add_gate(Circuit& circuit, const toolkit::LibraryGate& gate, const std::string& output,
              const std::vector<CircuitPin>& pins, bool is_inverted) {
  assert(pins.size() == gate.input_count());
  std::vector<std::string> inputs;
  for (const CircuitPin& pin : pins)
    if (!pin.wire.empty()) inputs.push_back(pin.wire);
  const std::string own = is_inverted ? output + "'" : output;
  circuit.gates.push_back({own, inputs, [gate, pins](const std::vector<bool>& values, bool now) {
                             std::vector<Word> at_pins;  // one case, in the lowest bit
                             std::size_t wired = 0;
                             for (const CircuitPin& pin : pins) {
                               const bool value = !pin.wire.empty() && values[wired++];
                               at_pins.push_back(value != pin.is_inverted ? 1 : 0);
                             }
                             return (next_output(gate, at_pins, now ? 1 : 0) & 1u) != 0;
                           }});
  if (!is_inverted) return;
  const auto inverter = [](const std::vector<bool>& values, bool) { return !values[0]; };
  circuit.gates.push_back({output, {own}, inverter});
}

std::string find_fault(const net::Stg& stg, const Graph& graph, const Values& initial,
                       const Circuit& circuit, std::size_t max_states) {
  return Explorer(stg, graph, initial, circuit, max_states).run();
}

}  // namespace vorel::oracle
