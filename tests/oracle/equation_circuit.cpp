#include "oracle/equation_circuit.h"

#include <algorithm>

#include "oracle/circuit_states.h"
#include "support/logic_values.h"

namespace vorel::oracle {
namespace {

template <class Visit>
void for_each_operand(const toolkit::LogicExpr& expression, Visit visit) {
  if (const auto* both = std::get_if<toolkit::LogicExpr::And>(&expression.node)) {
    std::ranges::for_each(both->operands, visit);
  } else if (const auto* either = std::get_if<toolkit::LogicExpr::Or>(&expression.node)) {
    std::ranges::for_each(either->operands, visit);
  }
}

CircuitGate gate_of(const std::string& output, const toolkit::LogicExpr& expression) {
  const std::set<std::string> names = names_in(expression);
  const std::vector<std::string> inputs(names.begin(), names.end());
  return {
      output, inputs, [expression, inputs](const std::vector<bool>& values, bool) {
        return support::value_of(expression, [&](const std::string& name) {
          return values[static_cast<std::size_t>(std::ranges::find(inputs, name) - inputs.begin())];
        });
      }};
}

}  // namespace

std::set<std::string> names_in(const toolkit::LogicExpr& expression) {
  if (const auto* leaf = std::get_if<toolkit::LogicExpr::Literal>(&expression.node))
    return {leaf->name};
  std::set<std::string> names;
  for_each_operand(expression,
                   [&names](const toolkit::LogicExpr& operand) { names.merge(names_in(operand)); });
  return names;
}

bool value_of(const toolkit::LogicExpr& expression, const net::Stg& stg, const Values& code) {
  return support::value_of(expression, [&](const std::string& name) {
    const auto signal = std::ranges::find(
        stg.signals, name, [](const auto& s) -> const auto& { return s->name; });
    return code[(*signal)->index] != 0;
  });
}

std::string find_hazard(const net::Stg& stg, const StateGraph<net::Stg>& graph,
                        const Values& initial,
                        const std::vector<const synthesis::SignalSolution*>& solutions) {
  if (!disabled_signals(stg, graph).empty()) return "";
  Circuit circuit;
  for (const synthesis::SignalSolution* const solution : solutions)
    circuit.gates.push_back(gate_of(solution->name(), solution->best().equation));
  // A C-element with its second input inverted.
  const auto c_element = [](const std::vector<bool>& inputs, bool now) {
    return (inputs[0] && !inputs[1]) || (now && (inputs[0] || !inputs[1]));
  };
  for (std::size_t i = 0; i < solutions.size(); i += 2) {
    const std::string& signal = stg.signals[stg.inputs_end + i / 2]->name;
    circuit.gates.push_back({signal, {solutions[i]->name(), solutions[i + 1]->name()}, c_element});
  }
  return find_fault(stg, graph, initial, circuit);
}

}  // namespace vorel::oracle
