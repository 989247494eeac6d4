#include "decomposition/boolean_decomposer.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "base/run_state.h"
#include "bdd/bdd_structure.h"
#include "bdd/cover_bdd.h"
#include "decomposition/brel_solver.h"
#include "decomposition/easy_cost.h"
#include "decomposition/gate_covers.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd, bdd::BDDCover;

BrelOptions search_options() {
  BrelOptions options;
  options.max_explored = 1000;
  options.stored_solutions = 500;
  return options;
}

std::vector<Bdd> variables_of(const BDDCover& cover) {
  std::vector<Bdd> variables;
  for (const std::uint32_t variable : cover.support())
    variables.push_back(bdd::bdd_variable(variable));
  return variables;
}

// Not as an input of the gate that is to drive it, unless the gate is made to keep its value.
bool is_own_literal(const Bdd& pin, const DecomposedFunction& function) {
  return function.own_variable && is_literal(pin) && pin.variable() == *function.own_variable;
}

BDDCover with_pins(const DecomposingGate& gate, const std::vector<Bdd>& functions) {
  const std::uint32_t first = gate.pins.front().variable();
  std::vector<Bdd> substitution;
  for (std::uint32_t i = 0; i < first; ++i) substitution.push_back(bdd::bdd_variable(i));
  substitution.insert(substitution.end(), functions.begin(), functions.end());
  return compose(gate.covers, substitution);
}

}  // namespace

DecomposingGate::DecomposingGate(const toolkit::LibraryGate& gate, std::uint32_t first_variable)
    : is_latch{gate.gate_class != toolkit::GateClass::combinational} {
  for (std::uint32_t i = 0; i < gate.input_count(); ++i)
    pins.push_back(bdd::bdd_variable(first_variable + i));
  covers = compose(covers_of(gate), pins);
}

// The sets of a signal may overlap: a code of the context can leave open whether the signal is
// excited. Then the gate must do right in both states.
Bdd BooleanDecomposer::characteristic_function(const BDDCover& function, const BDDCover& gate) {
  return (~function.er_plus | gate.er_plus) & (~function.qr_plus | gate.qr_plus) &
         (~function.er_minus | gate.er_minus) & (~function.qr_minus | gate.qr_minus);
}

// Large functions are not minimised and factored for the sake of a number: the nodes are about as
// many as the literals, unless few variables decide much.
std::size_t BooleanDecomposer::literal_count(const Bdd& function) {
  constexpr std::size_t most_variables = 10, most_nodes = 50;
  const std::size_t nodes = node_count(function);
  if (nodes > most_nodes || function.support().size() > most_variables) return nodes - 1;
  return literals_.of(function);
}

BooleanDecomposer::PinCost& BooleanDecomposer::known_cost(const Bdd& pin) {
  const auto [entry, is_new] = known_costs_.try_emplace(pin);
  if (is_new) entry->second.least = is_literal(pin) ? 0 : pin.support().size();
  return entry->second;
}

// The exact cost matters of candidates that may be kept only.
double BooleanDecomposer::cost_of(const std::vector<Bdd>& pins, const DecomposedFunction& function,
                                  double bound) {
  std::size_t sum = 0;
  for (const Bdd& pin : pins) {
    const std::size_t least = known_cost(pin).least;
    if (least >= function.literals && least > 0) return unusable;
    sum += least;
  }
  if (static_cast<double>(sum) >= bound) return static_cast<double>(sum);
  sum = 0;
  for (const Bdd& pin : pins) {
    PinCost& cost = known_cost(pin);
    if (!cost.literals) cost.literals = cost.least == 0 ? 0 : literal_count(pin);
    if (*cost.literals >= function.literals) return unusable;
    sum += *cost.literals;
  }
  return static_cast<double>(sum);
}

double BooleanDecomposer::offer(const std::vector<Bdd>& pins, const DecomposedFunction& function,
                                const DecomposingGate& gate,
                                std::vector<BooleanCandidate>& candidates) {
  for (const Bdd& pin : pins)
    if (pin.is_constant() || (!gate.is_latch && is_own_literal(pin, function))) return unusable;
  const double bound = candidates.size() < most_candidates ? unusable : candidates.back().cost;
  const double cost = cost_of(pins, function, bound);
  const auto is_same_circuit = [&](const BooleanCandidate& other) {
    return std::ranges::is_permutation(other.pins, pins) &&
           with_pins(gate, other.pins) == with_pins(gate, pins);
  };
  if (cost >= bound || std::ranges::any_of(candidates, is_same_circuit)) return cost;
  if (candidates.size() == most_candidates) candidates.pop_back();
  const auto place = std::ranges::upper_bound(candidates, cost, {}, &BooleanCandidate::cost);
  candidates.insert(place, {pins, cost});
  return cost;
}

std::vector<BooleanCandidate> BooleanDecomposer::decompose(const DecomposedFunction& function,
                                                           const DecomposingGate& gate) {
  const Bdd relation = characteristic_function(function.covers, gate.covers);
  if (base::verbosity() > 4) {
    std::cerr << "\ndecompose is called:\nFUN:\n"
              << to_string(function.covers) << "\nG:\n"
              << to_string(gate.covers) << "\nCharacteristic function:\n"
              << to_string(bdd::cover_of(relation).cover) << '\n';
  }
  if (gate.pins.empty()) return {};
  std::vector<BooleanCandidate> candidates;
  known_costs_.clear();
  brel_solve(relation, variables_of(function.covers), gate.pins, search_options(),
             {easy_cost, [&](const std::vector<Bdd>& pins) {
                return offer(pins, function, gate, candidates);
              }});
  return candidates;
}

}  // namespace vorel::decomposition
