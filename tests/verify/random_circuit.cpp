#include "verify/random_circuit.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <optional>

#include "oracle/table_relation.h"

namespace vorel::verify_testing {
namespace {

std::size_t row_bit(std::size_t input) { return std::size_t{1} << input; }

// Value of the signal in the next state of each code, as a table over the visible signals.
using NextValues = std::map<std::vector<bool>, bool>;

NextValues next_values(const net::Stg& stg, const oracle::StateGraph<net::Stg>& graph,
                       const oracle::Values& initial, std::uint32_t signal) {
  NextValues result;
  for (std::uint32_t s = 0; s < graph.states.size(); ++s) {
    const oracle::Values code = oracle::code_of(graph.states[s], initial);
    const std::vector<bool> key(code.begin(), code.begin() + stg.internals_end);
    const bool changes = oracle::enabled_through_dummies(graph, s).contains(signal);
    result.emplace(key, (code[signal] != 0) != changes);
  }
  return result;
}

// The values as a function of fewer signals, if they are one.
std::optional<NextValues> projection(const NextValues& values, const std::vector<bool>& kept) {
  NextValues result;
  for (const auto& [code, value] : values) {
    std::vector<bool> key = code;
    for (std::size_t i = 0; i < key.size(); ++i) key[i] = key[i] && kept[i];
    if (result.emplace(key, value).first->second != value) return std::nullopt;
  }
  return result;
}

TableGate gate_for(const net::Stg& stg, NextValues values, std::uint32_t signal,
                   oracle::Random& random) {
  std::vector<bool> kept(stg.internals_end, true);
  std::vector<std::uint32_t> order;
  for (std::uint32_t i = 0; i < stg.internals_end; ++i) order.push_back(i);
  random.shuffle(order);
  for (const std::uint32_t i : order) {
    kept[i] = false;
    if (auto fewer = projection(values, kept))
      values = std::move(*fewer);
    else
      kept[i] = true;
  }
  TableGate gate{stg.signals[signal]->name, {}, {}};
  std::vector<std::uint32_t> inputs;
  for (std::uint32_t i = 0; i < stg.internals_end; ++i)
    if (kept[i] && i != signal) inputs.push_back(i);
  for (const std::uint32_t i : inputs) gate.inputs.push_back(stg.signals[i]->name);
  inputs.push_back(signal);
  for (std::size_t row = 0; row < row_bit(inputs.size()); ++row) {
    std::vector<bool> code(stg.internals_end);
    for (std::size_t k = 0; k < inputs.size(); ++k)
      code[inputs[k]] = kept[inputs[k]] && (row & row_bit(k)) != 0;
    const auto known = values.find(code);
    gate.next.push_back(known == values.end() ? random.chance(50) : known->second);
  }
  return gate;
}

TableGate buffer(const std::string& output, const std::string& input, bool inverts) {
  return {output, {input}, {inverts, !inverts, inverts, !inverts}};
}

// For each row of the gate with the output at a value: a gate that does not depend on its own.
TableGate half(const TableGate& gate, const std::string& output, bool at, bool complement) {
  TableGate result{output, gate.inputs, {}};
  const std::size_t rows = row_bit(gate.inputs.size());
  for (std::size_t row = 0; row < 2 * rows; ++row)
    result.next.push_back(gate.next[row % rows + (at ? rows : 0)] != complement);
  return result;
}

bool has_influence(const TableGate& gate, std::size_t input) {
  for (std::size_t row = 0; row < gate.next.size(); ++row)
    if (gate.next[row] != gate.next[row ^ row_bit(input)]) return true;
  return false;
}

}  // namespace

TableCircuit random_circuit(const net::Stg& stg, const oracle::StateGraph<net::Stg>& graph,
                            const oracle::Values& initial, oracle::Random& random) {
  TableCircuit circuit;
  for (std::uint32_t s = stg.inputs_end; s < stg.internals_end; ++s)
    circuit.push_back(gate_for(stg, next_values(stg, graph, initial, s), s, random));
  return circuit;
}

void split(TableCircuit& circuit, oracle::Random& random) {
  TableGate& gate = circuit[random.below(circuit.size())];
  const std::string wire = "w" + std::to_string(circuit.size());
  const std::string output = gate.output;
  switch (random.below(3)) {
    case 0: {  // behind the output, which the gate goes on reading
      TableGate inner{wire, gate.inputs, {}};
      inner.inputs.push_back(output);
      for (std::size_t row = 0; row < 2 * gate.next.size(); ++row)
        inner.next.push_back(gate.next[row % gate.next.size()]);
      gate = buffer(output, wire, false);
      circuit.push_back(inner);
      return;
    }
    case 1: {  // before an input
      if (gate.inputs.empty()) return;
      std::string& input = gate.inputs[random.below(gate.inputs.size())];
      circuit.push_back(buffer(wire, std::exchange(input, wire), false));
      return;
    }
    default: {
      const TableGate set = half(gate, wire, false, false);
      const TableGate reset = half(gate, wire + "r", true, true);
      gate = {output, {wire, wire + "r"}, {false, true, false, false, true, true, false, true}};
      circuit.push_back(set);
      circuit.push_back(reset);
    }
  }
}

void mutate(TableCircuit& circuit, oracle::Random& random) {
  TableGate& gate = circuit[random.below(circuit.size())];
  const std::size_t kind = random.below(gate.inputs.size() < 2 ? 2 : 3);
  if (kind == 0 || gate.inputs.empty()) {
    const std::size_t row = random.below(gate.next.size());
    gate.next[row] = !gate.next[row];
  } else if (kind == 1) {
    const std::size_t bit = row_bit(random.below(gate.inputs.size()));
    const std::vector<bool> next = gate.next;
    for (std::size_t row = 0; row < next.size(); ++row) gate.next[row] = next[row ^ bit];
  } else {
    random.shuffle(gate.inputs);
  }
}

oracle::Circuit oracle_circuit(const TableCircuit& circuit) {
  oracle::Circuit result;
  for (const TableGate& gate : circuit)
    result.gates.push_back(
        {gate.output, gate.inputs, [gate](const std::vector<bool>& inputs, bool output) {
           std::size_t row = output ? row_bit(inputs.size()) : 0;
           for (std::size_t i = 0; i < inputs.size(); ++i) row += inputs[i] ? row_bit(i) : 0;
           return bool{gate.next[row]};
         }});
  return result;
}

verify::Circuit circuit_of(const TableCircuit& circuit, const net::Stg& stg,
                           const oracle::Values& initial) {
  verify::Circuit result;
  std::map<std::string, verify::WireId> wires;
  const auto add_wire = [&](const std::string& name, std::optional<net::SignalId> signal) {
    const auto number = static_cast<std::uint32_t>(result.wires.size());
    if (!wires.emplace(name, verify::WireId{number}).second) return;
    result.wires.push_back({name, signal && initial[signal->value] != 0, signal});
  };
  for (const net::SignalId s : stg.visible_signals()) add_wire(stg.signals[s.value]->name, s);
  for (const TableGate& gate : circuit) add_wire(gate.output, std::nullopt);
  for (const TableGate& table : circuit) {
    verify::Gate gate{"g_" + table.output, 0, wires.at(table.output), {}, {}};
    std::vector<bdd::Bdd> variables;  // one without influence has that of the next
    for (std::size_t i = 0; i <= table.inputs.size(); ++i) {
      variables.push_back(bdd::bdd_variable(static_cast<std::uint32_t>(gate.inputs.size())));
      if (i < table.inputs.size() && has_influence(table, i))
        gate.inputs.push_back(wires.at(table.inputs[i]));
    }
    gate.function =
        oracle::bdd_of_values(variables, [&](std::uint32_t row) { return bool{table.next[row]}; });
    result.gates.push_back(std::move(gate));
  }
  std::vector<bool> values;
  for (const verify::Wire& wire : result.wires) values.push_back(wire.initial_value);
  for (std::size_t round = 0; round < result.gates.size(); ++round) {
    for (const verify::Gate& gate : result.gates) {
      verify::Wire& output = result.wires[gate.output.value];
      if (output.signal) continue;
      std::vector<int> inputs;
      for (const verify::WireId input : gate.inputs)
        inputs.push_back(result.wires[input.value].initial_value ? 1 : 0);
      inputs.push_back(output.initial_value ? 1 : 0);
      output.initial_value = gate.function.evaluate(inputs);
    }
  }
  return result;
}

}  // namespace vorel::verify_testing
