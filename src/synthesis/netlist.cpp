#include "synthesis/netlist.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "synthesis/verilog_writer.h"

namespace vorel::synthesis {
namespace {

class EquationNetlist {
 public:
  EquationNetlist(const net::Stg& stg, SynthesisStyle style,
                  std::span<const SignalSolution* const> solutions)
      : stg_{stg}, style_{style}, solutions_{solutions} {
    for (const auto& signal : stg.signals) {
      if (!signal->is_dummy()) values_.emplace(signal->name, signal->initial_value == 1);
    }
  }

  Netlist run() {
    std::uint64_t literals = 0;
    for (const SignalSolution* solution : solutions_) literals += solution->cost();
    netlist_.title = std::string(style_name()) + " implementation, " + std::to_string(literals) +
                     " literals; each assignment is one gate";
    if (style_ == SynthesisStyle::standard_c) wires_ = standard_c_wires(stg_);
    const std::size_t count = stg_.internals_end - stg_.inputs_end;
    for (std::size_t number = 0; number < count; ++number) add_signal(number);
    return std::move(netlist_);
  }

 private:
  std::string_view style_name() const {
    if (style_ == SynthesisStyle::generalised_c) return "generalised-C";
    return style_ == SynthesisStyle::standard_c ? "standard-C" : "complex-gate";
  }

  const toolkit::LogicExpr& equation(std::size_t solution) const {
    return solutions_[solution]->best().equation;
  }

  void add_signal(std::size_t number) {
    const std::string& signal = stg_.signals[stg_.inputs_end + number]->name;
    if (!has_two_functions(style_)) return add(signal, equation(number), "");
    const toolkit::LogicExpr& set = equation(2 * number);
    const toolkit::LogicExpr& reset = equation(2 * number + 1);
    if (style_ == SynthesisStyle::generalised_c)
      return add(signal, gc_equation(signal, set, reset), "generalised C-element");
    const StandardCWires& wires = wires_[number];
    add(wires.set, set, "");
    add(wires.reset, reset, "");
    add(signal, c_element_equation(signal, wires), "C-element with one inverted input");
  }

  void add(const std::string& output, toolkit::LogicExpr function, std::string comment) {
    NetlistGate& gate = netlist_.gates.emplace_back();
    gate.output = output;
    const auto signal = values_.find(output);
    const auto value = signal != values_.end() ? signal->second : value_of(function, values_);
    assert(value && "equations are over signals, which have values");
    gate.initial_value = *value;
    gate.function = std::move(function);
    gate.comment = std::move(comment);
  }

  const net::Stg& stg_;
  const SynthesisStyle style_;
  const std::span<const SignalSolution* const> solutions_;
  std::vector<StandardCWires> wires_;             // by driven signal
  std::unordered_map<std::string, bool> values_;  // of the signals
  Netlist netlist_;
};

}  // namespace

Netlist netlist_of(const net::Stg& stg, SynthesisStyle style,
                   std::span<const SignalSolution* const> solutions) {
  assert(solutions.size() ==
         (stg.internals_end - stg.inputs_end) * (has_two_functions(style) ? 2u : 1u));
  return EquationNetlist(stg, style, solutions).run();
}

std::optional<bool> value_of(const toolkit::LogicExpr& function,
                             const std::unordered_map<std::string, bool>& values) {
  if (const auto* constant = std::get_if<toolkit::LogicExpr::Const>(&function.node))
    return constant->value;
  if (const auto* literal = std::get_if<toolkit::LogicExpr::Literal>(&function.node)) {
    const auto found = values.find(literal->name);
    if (found == values.end()) return std::nullopt;
    return found->second != literal->negated;
  }
  const auto* conjunction = std::get_if<toolkit::LogicExpr::And>(&function.node);
  const auto& operands = conjunction != nullptr
                             ? conjunction->operands
                             : std::get<toolkit::LogicExpr::Or>(function.node).operands;
  const bool decisive = conjunction == nullptr;
  std::optional<bool> result = !decisive;
  for (const toolkit::LogicExpr& operand : operands) {
    const auto value = value_of(operand, values);
    if (value == decisive) return decisive;
    if (!value) result = std::nullopt;
  }
  return result;
}

std::vector<std::string> names_of(const net::Stg& stg, const Netlist& netlist) {
  std::vector<std::string> names;
  for (const auto& signal : stg.signals) names.push_back(signal->name);
  for (const NetlistGate& gate : netlist.gates) {
    names.push_back(gate.output);
    names.push_back(gate.instance);
    for (const NetlistInput& input : gate.inputs) {
      names.push_back(input.inverter);
      names.push_back(input.inverted_wire);
    }
  }
  return names;
}

}  // namespace vorel::synthesis
