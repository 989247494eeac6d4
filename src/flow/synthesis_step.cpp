#include "flow/synthesis_step.h"

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <set>
#include <sstream>
#include <utility>

#include "base/messages.h"
#include "decomposition/decomposition_driver.h"
#include "decomposition/gate_models.h"
#include "net/clone_net.h"
#include "resolution/coefficients.h"
#include "synthesis/equation_search.h"
#include "synthesis/netlist_module.h"
#include "synthesis/netlist_reset.h"

namespace vorel::flow {
namespace {

using Gates = std::span<const toolkit::LibraryGate>;

synthesis::SynthesisStyle synthesis_style(Style style) {
  using enum synthesis::SynthesisStyle;
  assert(style != Style::automatic && style != Style::mapped);
  if (style == Style::complex_gate) return complex_gate;
  return style == Style::generalised_c ? generalised_c : standard_c;
}

void collect_names(const toolkit::LogicExpr& expression, std::set<std::string>& names) {
  if (const auto* literal = std::get_if<toolkit::LogicExpr::Literal>(&expression.node))
    names.insert(literal->name);
  else if (const auto* both = std::get_if<toolkit::LogicExpr::And>(&expression.node))
    for (const auto& operand : both->operands) collect_names(operand, names);
  else if (const auto* any = std::get_if<toolkit::LogicExpr::Or>(&expression.node))
    for (const auto& operand : any->operands) collect_names(operand, names);
}

double area_of(Gates gates, const std::string& name) {
  const auto gate = std::ranges::find(gates, name, &toolkit::LibraryGate::name);
  return gate == gates.end() ? 0 : gate->area;
}

Instance instance_of(const synthesis::NetlistGate& gate, const synthesis::NetlistCell& inverter,
                     Gates gates) {
  Instance result;
  result.name = gate.instance;
  result.gate = gate.cell.name;
  result.output = gate.output;
  result.function = to_string(gate.function);
  if (!gate.is_instance()) {
    std::set<std::string> names;
    collect_names(gate.function, names);
    for (const std::string& name : names) result.inputs.push_back({.pin = "", .wire = name});
    return result;
  }
  result.area = area_of(gates, gate.cell.name);
  assert(gate.inputs.size() == gate.cell.pins.size());
  for (std::size_t i = 0; i < gate.inputs.size(); ++i) {
    const synthesis::NetlistInput& input = gate.inputs[i];
    const bool is_inverted = !input.inverter.empty();
    if (is_inverted) result.area += area_of(gates, inverter.name);
    const std::string constant = input.constant ? "1" : "0";
    result.inputs.push_back({.pin = gate.cell.pins[i],
                             .wire = input.wire.empty() ? constant : input.wire,
                             .is_inverted = is_inverted});
  }
  return result;
}

// All texts of a netlist. False after an error.
bool write_texts(const net::Stg& stg, synthesis::Netlist netlist, Gates gates,
                 const StepContext& context, CircuitResult& result) {
  synthesis::ModuleOptions options = context.request.module;
  if (options.name.empty())
    options.name = std::filesystem::path(context.request.stg_name).stem().string();
  options.name = synthesis::module_name_of(netlist, options.name);
  if (options.reset == synthesis::ResetKind::input &&
      !synthesis::add_reset(netlist, stg, options.reset_input))
    return false;
  std::ostringstream module, models, testbench;
  if (!synthesis::write_module(module, stg, netlist, options)) return false;
  decomposition::write_gate_models_of(models, netlist, options.name, gates);
  if (context.request.wants_testbench &&
      !synthesis::write_testbench(testbench, stg,
                                  synthesis::testbench_subject(stg, netlist, options)))
    return false;
  for (const synthesis::NetlistGate& gate : netlist.gates) {
    result.instances.push_back(instance_of(gate, netlist.inverter, gates));
    result.area += result.instances.back().area;
  }
  result.module_name = options.name;
  result.module_text = std::move(module).str();
  result.models_text = std::move(models).str();
  result.testbench_text = std::move(testbench).str();
  return true;
}

std::optional<Synthesised> equations(const net::StgPrefix& stg, Style style, Gates gates,
                                     const StepContext& context) {
  base::Params params = context.params;
  params.set("solver", 0);  // many small questions, as ever for equations
  synthesis::EquationSearch search(stg, configuration::SearchOptions::of(params),
                                   synthesis_style(style));
  search.run();
  if (base::run_failed()) return std::nullopt;
  std::vector<const synthesis::SignalSolution*> solutions;
  Synthesised result;
  result.circuit.style = style;
  for (const auto& found : search.found().solutions) {
    const auto& solution = static_cast<const synthesis::SignalSolution&>(*found);
    solutions.push_back(&solution);
    result.circuit.equations.push_back({.function = solution.name(),
                                        .text = to_string(solution.best().equation),
                                        .literals = solution.best().cost,
                                        .triggers = solution.triggers()});
  }
  if (!write_texts(stg, synthesis::netlist_of(stg, synthesis_style(style), solutions), gates,
                   context, result.circuit))
    return std::nullopt;
  return result;
}

std::optional<Synthesised> mapped(const net::StgPrefix& stg, Gates gates,
                                  const StepContext& context) {
  base::Params params = context.params;
  net::StgPrefix prefix = net::clone_prefix(stg);
  resolution::evaluate_coefficients(resolution::CoefficientTexts(), prefix, params);
  decomposition::DecompositionDriver driver(prefix, params, context.request.library);
  driver.run();
  if (driver.circuit() == nullptr) return std::nullopt;
  const decomposition::MappedCircuit& circuit = *driver.circuit();
  Synthesised result;
  result.circuit.style = Style::mapped;
  result.circuit.inserted = driver.inserted();
  for (std::size_t i = 0; i < circuit.found().solutions.size(); ++i) {
    const decomposition::MappedSolution& solution = circuit.solution(i);
    result.circuit.equations.push_back({.function = solution.signal(),
                                        .text = solution.function_text(),
                                        .literals = solution.cost(),
                                        .triggers = solution.triggers()});
  }
  if (!write_texts(prefix, circuit.netlist(), gates, context, result.circuit)) return std::nullopt;
  if (!result.circuit.inserted.empty()) result.mapped = std::move(prefix);
  return result;
}

}  // namespace

std::optional<Synthesised> synthesise(const net::StgPrefix& stg, Style style, Gates gates,
                                      const StepContext& context) {
  return style == Style::mapped ? mapped(stg, gates, context)
                                : equations(stg, style, gates, context);
}

}  // namespace vorel::flow
