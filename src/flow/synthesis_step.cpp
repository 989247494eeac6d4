#include "flow/synthesis_step.h"

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <set>
#include <utility>

#include "base/messages.h"
#include "decomposition/decomposition_driver.h"
#include "flow/module_step.h"
#include "net/clone_net.h"
#include "resolution/coefficients.h"
#include "synthesis/equation_search.h"
#include "synthesis/netlist.h"

namespace vorel::flow {
namespace {

using Gates = std::span<const toolkit::LibraryGate>;

synthesis::SynthesisStyle synthesis_style(Style style) {
  using enum synthesis::SynthesisStyle;
  assert(style != Style::automatic && style != Style::mapped);
  if (style == Style::complex_gate) return complex_gate;
  return style == Style::generalised_c ? generalised_c : standard_c;
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
  const auto netlist = synthesis::netlist_of(stg, synthesis_style(style), solutions);
  if (!write_texts(result.circuit, netlist, stg, gates, context.request)) return std::nullopt;
  return result;
}

// Mapping may take very long where it finds nothing. What can follow it needs time, too.
base::Deadline mapping_deadline(const StepContext& context) {
  const double left = context.deadline.left(), most = context.request.limits.max_mapping_seconds;
  if (context.request.style != Style::automatic) return base::Deadline(left);
  if (left == 0 || most == 0) return base::Deadline(left == 0 ? most : left / 2);
  return base::Deadline(std::min(left / 2, most));
}

std::optional<Synthesised> mapped(const net::StgPrefix& stg, Gates gates,
                                  const StepContext& context) {
  base::Params params = context.params;
  net::StgPrefix prefix = net::clone_prefix(stg);
  resolution::evaluate_coefficients(resolution::CoefficientTexts(), prefix, params);
  decomposition::DecompositionDriver driver(prefix, params, context.request.library);
  driver.set_deadline(mapping_deadline(context));
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
  if (!write_texts(result.circuit, circuit.netlist(), prefix, gates, context.request))
    return std::nullopt;
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
