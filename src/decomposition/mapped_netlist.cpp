// A mapped circuit as a netlist for other tools.
#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "decomposition/gate_models.h"
#include "decomposition/mapped_circuit.h"

namespace vorel::decomposition {
namespace {

using synthesis::NetlistGate;
using synthesis::NetlistInput;
using toolkit::LogicExpr;

// The function of a cell over what its pins are connected to.
struct ExprAlgebra {
  const std::vector<LogicExpr>& pins;  // with that of the feedback

  LogicExpr constant(bool value) const { return {LogicExpr::Const{value}}; }
  LogicExpr pin(std::uint32_t p) const { return pins[p]; }
  LogicExpr negation(const LogicExpr& a) const { return toolkit::negate(a); }
  LogicExpr conjunction(const LogicExpr& a, const LogicExpr& b) const {
    return {LogicExpr::And{{a, b}}};
  }
  LogicExpr disjunction(const LogicExpr& a, const LogicExpr& b) const {
    return {LogicExpr::Or{{a, b}}};
  }
  LogicExpr exclusive_or(const LogicExpr& a, const LogicExpr& b) const {
    return disjunction(conjunction(a, toolkit::negate(b)), conjunction(toolkit::negate(a), b));
  }
};

LogicExpr value_at_pin(const NetlistInput& input) {
  if (input.wire.empty()) return {LogicExpr::Const{input.constant}};
  return {LogicExpr::Literal{input.wire, !input.inverter.empty()}};
}

synthesis::NetlistCell cell_of(const toolkit::LibraryGate& gate) {
  return {gate.name,
          gate.output,
          {gate.pins.begin(), gate.pins.begin() + gate.input_count()},
          delay_parameter(gate)};
}

class NetlistBuilder {
 public:
  NetlistBuilder(const net::Stg& stg, const GateLibrary& library) : library_{library} {
    for (const net::SignalId id : stg.visible_signals()) {
      const net::Signal& signal = base::element(stg.signals, id);
      values_.emplace(signal.name, signal.initial_value == 1);
    }
    netlist_.inverter = cell_of(library.gate(library.inverter_name()));
  }

  synthesis::Netlist run(const MappedCircuit& circuit) {
    netlist_.title = base::format_message(
        "mapped implementation, area %.2f; each instance is one gate", circuit.area());
    for (std::size_t i = 0; i < circuit.found().solutions.size(); ++i) add(circuit.solution(i));
    return std::move(netlist_);
  }

 private:
  void add(const MappedSolution& solution) {
    for (const GateInstance& gate : solution.subfunction_gates()) add(gate, "");
    add(solution.main_gate(), '[' + solution.signal() + "] = " + solution.function_text());
  }

  void add(const GateInstance& gate, std::string comment) {
    const toolkit::LibraryGate& cell = library_.gate(gate.gate);
    NetlistGate result;
    result.output = gate.inverted() ? gate.bubble.wire : gate.output;
    result.instance = gate.name;
    result.cell = cell_of(cell);
    result.has_memory = cell.has_feedback;
    result.comment = std::move(comment);
    for (const InstancePin& pin : gate.pins)
      result.inputs.push_back(
          {pin.signal, pin.function.is_true(), pin.bubble.name, pin.bubble.wire});
    std::vector<LogicExpr> pins;
    for (const NetlistInput& input : result.inputs) pins.push_back(value_at_pin(input));
    if (cell.has_feedback) pins.push_back({LogicExpr::Literal{result.output, false}});
    result.function = toolkit::value_of<LogicExpr>(cell.function, ExprAlgebra{pins});
    set_initial_value(result, gate);
    netlist_.gates.push_back(std::move(result));
    if (gate.inverted()) add_inverter(gate);
  }

  // Where a signal is excited at the start, the last gate on the way to it is: a wire before it is
  // where its own gate rests. A gate that holds its value rests where what it drives rests.
  void set_initial_value(NetlistGate& result, const GateInstance& gate) {
    const auto known = values_.find(gate.output);
    const bool is_signal = known != values_.end();
    if (is_signal && !gate.inverted()) {
      result.initial_value = known->second;
    } else {
      const auto value = synthesis::value_of(result.function, values_);
      assert((value || is_signal) && "gates of subfunctions have no memory");
      result.initial_value = value ? *value : !known->second;
    }
    values_.emplace(gate.output, result.initial_value != gate.inverted());
    values_.emplace(result.output, result.initial_value);
  }

  void add_inverter(const GateInstance& gate) {
    NetlistGate inverter;
    inverter.output = gate.output;
    inverter.instance = gate.bubble.name;
    inverter.cell = netlist_.inverter;
    inverter.inputs.push_back({gate.bubble.wire});
    inverter.function = {LogicExpr::Literal{gate.bubble.wire, true}};
    inverter.initial_value = values_.at(gate.output);
    netlist_.gates.push_back(std::move(inverter));
  }

  const GateLibrary& library_;
  std::unordered_map<std::string, bool> values_;  // of signals and wires
  synthesis::Netlist netlist_;
};

}  // namespace

synthesis::Netlist MappedCircuit::netlist() const {
  return NetlistBuilder(stg_, library_).run(*this);
}

}  // namespace vorel::decomposition
