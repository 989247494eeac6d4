#include "verify/netlist_gates.h"

#include <algorithm>
#include <cassert>
#include <unordered_map>
#include <utility>

#include "decomposition/gate_library.h"

namespace vorel::verify {
namespace {

using toolkit::GateOperator;
using toolkit::LibraryGate;

VerilogOp operator_of(GateOperator op) {
  switch (op) {
    case GateOperator::constant_0:
      return VerilogOp::constant_0;
    case GateOperator::constant_1:
      return VerilogOp::constant_1;
    case GateOperator::negation:
      return VerilogOp::negation;
    case GateOperator::conjunction:
      return VerilogOp::conjunction;
    case GateOperator::disjunction:
      return VerilogOp::disjunction;
    case GateOperator::exclusive_or:
      return VerilogOp::exclusive_or;
    case GateOperator::pin:
      break;
  }
  assert(false && "a pin stands for what it is connected to");
  return VerilogOp::constant_0;
}

class GateFinder {
 public:
  GateFinder(const base::SourceText& source, const VerilogModule& module,
             std::span<const LibraryGate> library)
      : source_{source}, module_{module} {
    for (const LibraryGate& gate : library) gate_of_.emplace(gate.name, &gate);
  }

  bool run() {
    for (const VerilogGate& gate : module_.gates) {
      const auto* const instance = std::get_if<VerilogInstance>(&gate.what);
      if (instance == nullptr) {
        add_assignment(gate, std::get<VerilogAssignment>(gate.what));
      } else if (!add_instance(gate, *instance)) {
        return false;
      }
    }
    return true;
  }

  std::vector<NetlistGate> take_result() { return std::move(result_); }

 private:
  void add_assignment(const VerilogGate& gate, const VerilogAssignment& assignment) {
    const std::string name =
        gate.name.empty() ? "assign " + module_.wires[assignment.target].name : gate.name;
    result_.push_back({name, gate.spot, gate.zero_delay, assignment.target, assignment.value});
  }

  bool add_instance(const VerilogGate& gate, const VerilogInstance& instance) {
    const auto found = gate_of_.find(instance.gate);
    if (found == gate_of_.end())
      return fail(gate.spot, "there is no gate " + base::quoted(instance.gate) + " in the library");
    const LibraryGate& cell = *found->second;
    if (!decomposition::is_usable(cell))
      return fail(gate.spot, "the gate " + base::quoted(cell.name) +
                                 " cannot be verified: clocked latches have no part in a circuit "
                                 "without a clock, and '**wire**' is no gate");
    // The output, then the inputs of the gate.
    std::vector<const VerilogConnection*> ports(1 + cell.input_count(), nullptr);
    const bool is_positional =
        !instance.connections.empty() && instance.connections.front().port.empty();
    if (is_positional ? !connect_by_position(gate, instance, cell, ports)
                      : !connect_by_name(instance, cell, ports)) {
      return false;
    }
    for (std::size_t i = 0; i < ports.size(); ++i) {
      if (ports[i] == nullptr || ports[i]->value.empty())
        return fail(gate.spot, "the port " + base::quoted(port_name(cell, i)) + " of the gate " +
                                   base::quoted(cell.name) + " is not connected");
    }
    return add_cell(gate, cell, ports);
  }

  static const std::string& port_name(const LibraryGate& cell, std::size_t port) {
    return port == 0 ? cell.output : cell.pins[port - 1];
  }

  bool connect_by_position(const VerilogGate& gate, const VerilogInstance& instance,
                           const LibraryGate& cell,
                           std::vector<const VerilogConnection*>& ports) const {
    if (instance.connections.size() != ports.size())
      return fail(gate.spot, "the gate " + base::quoted(cell.name) + " has " +
                                 std::to_string(ports.size()) + " ports, but " +
                                 std::to_string(instance.connections.size()) + " connections");
    std::ranges::transform(instance.connections, ports.begin(),
                           [](const VerilogConnection& connection) { return &connection; });
    return true;
  }

  bool connect_by_name(const VerilogInstance& instance, const LibraryGate& cell,
                       std::vector<const VerilogConnection*>& ports) const {
    for (const VerilogConnection& connection : instance.connections) {
      std::size_t port = 0;
      while (port < ports.size() && port_name(cell, port) != connection.port) ++port;
      if (port == ports.size())
        return fail(connection.spot, "the gate " + base::quoted(cell.name) + " has no port " +
                                         base::quoted(connection.port));
      if (ports[port] != nullptr)
        return fail(connection.spot,
                    "the port " + base::quoted(connection.port) + " is connected twice");
      ports[port] = &connection;
    }
    return true;
  }

  bool add_cell(const VerilogGate& gate, const LibraryGate& cell,
                const std::vector<const VerilogConnection*>& ports) {
    const VerilogStep output = ports[0]->value.front();
    if (output.op != VerilogOp::wire) return fail(ports[0]->spot, "a constant cannot be driven");
    VerilogExpression next;
    for (const toolkit::GateStep& step : cell.function.steps) {
      if (step.op != GateOperator::pin) {
        next.push_back({operator_of(step.op)});
      } else {
        next.push_back(cell.is_feedback(step.pin) ? output : ports[step.pin + 1]->value.front());
      }
    }
    const std::string name =
        gate.name.empty() ? cell.name + ' ' + module_.wires[output.wire].name : gate.name;
    result_.push_back({name, gate.spot, gate.zero_delay, output.wire, std::move(next)});
    return true;
  }

  bool fail(Spot spot, const std::string& fault) const {
    return source_.report(spot.offset, fault);
  }

  const base::SourceText& source_;
  const VerilogModule& module_;
  std::unordered_map<std::string, const LibraryGate*> gate_of_;
  std::vector<NetlistGate> result_;
};

// The value where each step of a wire has the value that `value_of_wire` gives.
template <class ValueOfWire>
bdd::Bdd value_of(const VerilogExpression& expression, const ValueOfWire& value_of_wire) {
  std::vector<bdd::Bdd> stack;
  const auto take = [&stack] {
    assert(!stack.empty() && "operands stand before their operator");
    bdd::Bdd value = std::move(stack.back());
    stack.pop_back();
    return value;
  };
  for (const VerilogStep& step : expression) {
    if (step.op == VerilogOp::wire) {
      stack.push_back(value_of_wire(step.wire));
    } else if (step.op == VerilogOp::constant_0 || step.op == VerilogOp::constant_1) {
      stack.emplace_back(step.op == VerilogOp::constant_1);
    } else if (step.op == VerilogOp::negation) {
      stack.push_back(~take());
    } else {
      const bdd::Bdd last = take(), other = take();
      if (step.op == VerilogOp::conjunction) {
        stack.push_back(other & last);
      } else if (step.op == VerilogOp::disjunction) {
        stack.push_back(other | last);
      } else if (step.op == VerilogOp::exclusive_or) {
        stack.push_back(other ^ last);
      } else {
        stack.push_back(bdd::ite(take(), other, last));
      }
    }
  }
  assert(stack.size() == 1 && "one value is left");
  return take();
}

// Leaves out the inputs without influence.
NetlistFunction with_inputs_that_count(NetlistFunction function) {
  const auto output = static_cast<std::uint32_t>(function.inputs.size());
  std::vector<bdd::Bdd> new_variable(output + 1, bdd::Bdd(false));
  std::vector<std::uint32_t> inputs;
  for (const std::uint32_t variable : function.function.support()) {
    new_variable[variable] = bdd::bdd_variable(static_cast<std::uint32_t>(inputs.size()));
    if (variable < output) inputs.push_back(function.inputs[variable]);
  }
  // The output is the last variable: as many inputs stand before it as are left.
  if (inputs.size() == function.inputs.size()) return function;
  return {inputs, bdd::compose(function.function, new_variable)};
}

}  // namespace

std::optional<std::vector<NetlistGate>> netlist_gates(const base::SourceText& source,
                                                      const VerilogModule& module,
                                                      std::span<const LibraryGate> library) {
  GateFinder finder(source, module, library);
  if (!finder.run()) return std::nullopt;
  return finder.take_result();
}

std::optional<NetlistFunction> function_of(const base::SourceText& source, const NetlistGate& gate,
                                           std::span<const WireLiteral> stands_for) {
  NetlistFunction result;
  std::unordered_map<std::uint32_t, std::uint32_t> variable_of;
  for (const VerilogStep& step : gate.next) {
    if (step.op != VerilogOp::wire) continue;
    const std::uint32_t wire = stands_for[step.wire].wire;
    if (wire == gate.output) continue;
    const auto next = static_cast<std::uint32_t>(result.inputs.size());
    if (variable_of.emplace(wire, next).second) result.inputs.push_back(wire);
  }
  if (result.inputs.size() > most_gate_inputs) {
    source.report(gate.spot.offset, "the gate " + base::quoted(gate.name) + " has more than " +
                                        std::to_string(most_gate_inputs) + " inputs");
    return std::nullopt;
  }
  variable_of[gate.output] = static_cast<std::uint32_t>(result.inputs.size());
  result.function = value_of(gate.next, [&](std::uint32_t wire) {
    const WireLiteral literal = stands_for[wire];
    const bdd::Bdd variable = bdd::bdd_variable(variable_of.at(literal.wire));
    return literal.is_inverted ? ~variable : variable;
  });
  return with_inputs_that_count(std::move(result));
}

}  // namespace vorel::verify
