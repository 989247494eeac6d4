#include "flow/module_step.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <sstream>
#include <utility>

#include "decomposition/gate_models.h"
#include "synthesis/netlist_module.h"
#include "synthesis/netlist_reset.h"
#include "synthesis/testbench.h"

namespace vorel::flow {
namespace {

using Gates = std::span<const toolkit::LibraryGate>;
using synthesis::NetlistGate;
using toolkit::LogicExpr;

// In the order of their first occurrence.
void add_wires(const LogicExpr& function, std::vector<std::string>& wires) {
  if (const auto* leaf = std::get_if<LogicExpr::Literal>(&function.node)) {
    if (std::ranges::find(wires, leaf->name) == wires.end()) wires.push_back(leaf->name);
  } else if (const auto* conjunction = std::get_if<LogicExpr::And>(&function.node)) {
    for (const LogicExpr& operand : conjunction->operands) add_wires(operand, wires);
  } else if (const auto* disjunction = std::get_if<LogicExpr::Or>(&function.node)) {
    for (const LogicExpr& operand : disjunction->operands) add_wires(operand, wires);
  }
}

double area_of(const std::string& cell, Gates gates) {
  const auto found = std::ranges::find(gates, cell, &toolkit::LibraryGate::name);
  assert(found != gates.end() && "instances are of gates of the library");
  return found->area;
}

Instance instance_of(const NetlistGate& gate, const synthesis::Netlist& netlist, Gates gates) {
  Instance result;
  result.name = gate.is_instance() ? gate.instance : "assign " + gate.output;
  result.gate = gate.cell.name;
  result.output = gate.output;
  result.function = to_string(gate.function);
  if (!gate.is_instance()) {
    std::vector<std::string> wires;
    add_wires(gate.function, wires);
    for (std::string& wire : wires) result.inputs.push_back({{}, std::move(wire), false});
    return result;
  }
  result.area = area_of(gate.cell.name, gates);
  for (std::size_t i = 0; i < gate.inputs.size(); ++i) {
    const synthesis::NetlistInput& input = gate.inputs[i];
    const bool is_inverted = !input.inverter.empty();
    const std::string constant = input.constant ? "1" : "0";
    result.inputs.push_back(
        {gate.cell.pins[i], input.wire.empty() ? constant : input.wire, is_inverted});
    if (is_inverted) result.area += area_of(netlist.inverter.name, gates);
  }
  return result;
}

}  // namespace

bool write_texts(CircuitResult& circuit, synthesis::Netlist netlist, const net::Stg& stg,
                 Gates gates, const FlowRequest& request) {
  synthesis::ModuleOptions options = request.module;
  options.name = synthesis::module_name_of(netlist, options.name);
  if (options.reset == synthesis::ResetKind::input &&
      !synthesis::add_reset(netlist, stg, options.reset_input)) {
    return false;
  }
  std::ostringstream module, models, testbench;
  if (!synthesis::write_module(module, stg, netlist, options)) return false;
  for (const NetlistGate& gate : netlist.gates) {
    if (gate.is_instance() && !decomposition::names_can_stand_in_verilog(*std::ranges::find(
                                  gates, gate.cell.name, &toolkit::LibraryGate::name))) {
      return false;
    }
  }
  decomposition::write_gate_models_of(models, netlist, options.name, gates);
  if (request.wants_testbench &&
      !synthesis::write_testbench(testbench, stg,
                                  synthesis::testbench_subject(stg, netlist, options))) {
    return false;
  }
  for (const NetlistGate& gate : netlist.gates) {
    circuit.instances.push_back(instance_of(gate, netlist, gates));
    circuit.area += circuit.instances.back().area;
  }
  circuit.module_name = options.name;
  circuit.module_text = std::move(module).str();
  circuit.models_text = std::move(models).str();
  circuit.testbench_text = std::move(testbench).str();
  return true;
}

}  // namespace vorel::flow
