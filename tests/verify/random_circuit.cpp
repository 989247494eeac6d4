#include "verify/random_circuit.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace vorel::verify_testing {
namespace {

// A gate as a table of next values: bit i of the row is input i, the bit after them the output.
struct TableGate {
  std::string output;
  std::vector<std::string> inputs;
  std::vector<bool> next;
};
using TableCircuit = std::vector<TableGate>;

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

TableGate buffer(const std::string& output, const std::string& input) {
  return {output, {input}, {false, true, false, true}};
}

// For each row of the gate with the output at a value: a gate that does not depend on its own.
TableGate half(const TableGate& gate, const std::string& output, bool at, bool complement) {
  TableGate result{output, gate.inputs, {}};
  const std::size_t rows = row_bit(gate.inputs.size());
  for (std::size_t row = 0; row < 2 * rows; ++row)
    result.next.push_back(gate.next[row % rows + (at ? rows : 0)] != complement);
  return result;
}

// Puts a wire between two gates, or splits a gate in three around a C-element.
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
      gate = buffer(output, wire);
      circuit.push_back(inner);
      return;
    }
    case 1: {  // before an input
      if (gate.inputs.empty()) return;
      std::string& input = gate.inputs[random.below(gate.inputs.size())];
      circuit.push_back(buffer(wire, std::exchange(input, wire)));
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

// The rows at which the gate is about to be high, as a sum of products.
std::string text_of(TableGate gate) {
  gate.inputs.push_back(gate.output);
  std::string text;
  for (std::size_t row = 0; row < gate.next.size(); ++row) {
    if (!gate.next[row]) continue;
    text += text.empty() ? "" : " | ";
    for (std::size_t i = 0; i < gate.inputs.size(); ++i)
      text += std::string(i == 0 ? "" : " & ") + (row & row_bit(i) ? "" : "~") + gate.inputs[i];
  }
  return "    assign " + gate.output + " = " + (text.empty() ? "1'b0" : text) + ";\n";
}

// As often as there are gates, those of wires that are no signals and not at rest flip.
void settle(const TableCircuit& circuit, std::map<std::string, bool>& values) {
  const auto signals = values;
  for (std::size_t round = 0; round < circuit.size(); ++round) {
    for (const TableGate& gate : circuit) {
      if (signals.contains(gate.output)) continue;
      std::size_t row = values[gate.output] ? row_bit(gate.inputs.size()) : 0;
      for (std::size_t i = 0; i < gate.inputs.size(); ++i)
        row |= values[gate.inputs[i]] ? row_bit(i) : 0;
      values[gate.output] = gate.next[row];
    }
  }
}

}  // namespace

std::string random_module(const net::Stg& stg, const oracle::StateGraph<net::Stg>& graph,
                          const oracle::Values& initial, oracle::Random& random) {
  TableCircuit circuit;
  std::map<std::string, bool> values;
  std::string ports, directions, text;
  for (std::uint32_t s = 0; s < stg.internals_end; ++s) {
    const std::string& name = stg.signals[s]->name;
    values[name] = initial[s] != 0;
    ports += (ports.empty() ? "" : ", ") + name;
    directions += std::string(s < stg.inputs_end ? "    input " : "    output ") + name + ";\n";
    if (s >= stg.inputs_end)
      circuit.push_back(gate_for(stg, next_values(stg, graph, initial, s), s, random));
  }
  for (std::uint32_t i = random.below(4); i > 0; --i) split(circuit, random);
  for (const TableGate& gate : circuit) text += text_of(gate);
  settle(circuit, values);
  text += "    // initial values of the signals\n    //";
  for (const auto& [wire, value] : values) text += (value ? " " : " !") + wire;
  return "module m(" + ports + ");\n" + directions + text + "\nendmodule\n";
}

}  // namespace vorel::verify_testing
