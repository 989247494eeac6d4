#include "decomposition/direct_candidates.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <iostream>
#include <utility>

#include "base/run_state.h"
#include "bdd/cover_bdd.h"

namespace vorel::decomposition {
namespace {

constexpr std::size_t line_width = 52;

bool tells_attempts() { return base::verbosity() > 3; }

void tell_attempt(const synthesis::SignalImplementation& alternative) {
  const std::string line(line_width, '*');
  std::cerr << "\n\n\n\n\n"
            << line << "\nTrying to match: " << toolkit::to_string(alternative.equation) << '\n'
            << line;
}

void tell_pair(const std::string& signal, const Deco& deco) {
  std::cerr << "\n\n\n\n\n"
            << std::string(line_width, '-') << "\nMonotonic decomposition of " << signal << ": SET "
            << toolkit::to_string(deco.function) << ", RESET "
            << toolkit::to_string(deco.inverse_function);
}

std::uint32_t variable_of(const std::string& name, std::span<const std::string> names) {
  const auto found = std::ranges::find(names, name);
  assert(found != names.end());
  return static_cast<std::uint32_t>(found - names.begin());
}

}  // namespace

bdd::BDDCover covers_of(const synthesis::SignalImplementation& alternative,
                        std::span<const std::string> names) {
  std::vector<bdd::Bdd> variables;
  for (const std::string& name : alternative.context)
    variables.push_back(bdd::bdd_variable(variable_of(name, names)));
  std::array<bdd::Bdd, 4> sets;
  for (std::size_t i = 0; i < sets.size(); ++i) {
    assert(alternative.covers[i].width() == variables.size());
    sets[i] = bdd::bdd_of(alternative.covers[i], variables);
  }
  return {sets[0], sets[1], sets[2], sets[3]};
}

std::vector<Deco> matched_candidates(const synthesis::SignalSolution& solution,
                                     GateMatcher& matcher, std::span<const std::string> names,
                                     OutputInverter inverter) {
  std::vector<Deco> candidates;
  for (const synthesis::SignalImplementation& alternative : solution.alternatives) {
    if (tells_attempts()) tell_attempt(alternative);
    const GateMatch match = matcher.match(covers_of(alternative, names), names, inverter);
    if (!match.exists()) continue;
    if (tells_attempts())
      std::cerr << "\nTrivially implementable by " << match.gate << " (perhaps, with inverters)";
    Deco deco = matched_deco(match, matcher.covers_of_match(match));
    deco.signal = solution.name();
    deco.variable = variable_of(solution.name(), names);
    deco.function = alternative.equation;
    deco.literals = alternative.cost;
    candidates.push_back(std::move(deco));
  }
  return candidates;
}

std::vector<Deco> monotonic_candidates(const std::string& signal, std::uint32_t variable,
                                       const synthesis::SignalSolution& set,
                                       const synthesis::SignalSolution& reset,
                                       std::uint64_t literals, GateMatcher& matcher,
                                       std::span<const std::string> names, LatchCost most,
                                       OutputInverter inverter) {
  std::vector<Deco> candidates;
  const GateMatch latch =
      matcher.match(monotonic_shape(bdd::bdd_variable(0), bdd::bdd_variable(1)), {}, inverter);
  if (!latch.exists()) return candidates;
  const bdd::BDDCover shape = matcher.covers_of_match(latch);
  for (const synthesis::SignalImplementation& rising : set.alternatives) {
    for (const synthesis::SignalImplementation& falling : reset.alternatives) {
      if (most == LatchCost::below_gate && rising.cost + falling.cost >= literals)
        return candidates;
      Deco deco = monotonic_deco(bdd::bdd_of(rising.equation, names),
                                 bdd::bdd_of(falling.equation, names), latch, shape);
      deco.signal = signal;
      deco.variable = variable;
      deco.function = rising.equation;
      deco.inverse_function = falling.equation;
      deco.literals = literals;
      deco.single_gate = inverter == OutputInverter::refused;
      if (tells_attempts()) tell_pair(signal, deco);
      for (Subfunction& part : deco.subfunctions)
        part.match = matcher.match(bdd::BDDCover(part.function), names);
      candidates.push_back(std::move(deco));
    }
  }
  return candidates;
}

}  // namespace vorel::decomposition
