#include "resolution/cost_formula.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <utility>

#include "resolution/critical_path.h"
#include "resolution/logic_complexity.h"
#include "resolution/signal_locks.h"
#include "resolution/trigger_formula.h"
#include "sat/integer_circuit.h"

namespace vorel::resolution {

using sat::Lit;
using sat::Lits;

CandidateList delaying_candidates(const Candidates& candidates) {
  const net::StgPrefix& prefix = candidates.prefix();
  const CriticalPath path(prefix);
  CandidateList delaying;
  for (const CandidateId candidate : candidates.all()) {
    const auto occurrences = candidates.occurrences_of(candidate);
    const auto is_delaying = [&](OccurrenceId id) {
      const EdgeOccurrence& occurrence = candidates.occurrence(id);
      return path.is_delaying(configuration::events_of(prefix, occurrence.causes),
                              configuration::events_of(prefix, occurrence.followers));
    };
    if (std::ranges::any_of(occurrences.begin(), occurrences.end(), is_delaying))
      delaying.push_back(candidate);
  }
  return delaying;
}

CostFormula::CostFormula(const OccurrenceOrder& order, const Candidates& candidates,
                         const CandidateLits& literals, const CostContext& context,
                         sat::CnfFormula& formula, sat::ClauseGroup group)
    : candidates_{candidates},
      formula_{formula},
      group_{group},
      coefficients_{context.coefficients} {
  CandidateGates gates(candidates, literals, formula, group);
  if (coefficients_.delay != 0) add_delay(literals);
  if (coefficients_.logic != 0) {
    logic_ = logic_number(order, coefficients_.pwr_of_2, gates, group);
    add_term(logic_, coefficients_.logic);
  }
  add_kinds(literals);
  if (coefficients_.non_locked_signals != 0) add_locks(order, gates, context.unlock_number);
  if (coefficients_.csc_cores != 0) {
    csc_cores_ = count(context.cores.csc_counter_literals);
    add_term(csc_cores_, coefficients_.csc_cores);
  }
  if (coefficients_.usc_cores != 0) {
    usc_cores_ = count(context.cores.usc_counter_literals);
    add_term(usc_cores_, coefficients_.usc_cores);
  }
}

void CostFormula::add_delay(const CandidateLits& literals) {
  delaying_ = delaying_candidates(candidates_);
  Lits lits;
  for (const CandidateId candidate : delaying_) lits.push_back(literals[candidate]);
  add_term(count(lits), coefficients_.delay);
}

void CostFormula::add_kinds(const CandidateLits& literals) {
  Lits sequential, concurrent;
  for (const CandidateId candidate : candidates_.all())
    (is_sequential(candidates_.insertion(candidate)) ? sequential : concurrent)
        .push_back(literals[candidate]);
  if (coefficients_.seq_insertions == coefficients_.conc_insertions) {
    sequential.insert(sequential.end(), concurrent.begin(), concurrent.end());
    concurrent.clear();
  }
  const auto add = [this](const Lits& lits, std::uint32_t coefficient) {
    if (coefficient != 0 && !lits.empty()) add_term(count(lits), coefficient);
  };
  add(sequential, coefficients_.seq_insertions);
  add(concurrent, coefficients_.conc_insertions);
}

void CostFormula::add_locks(const OccurrenceOrder& order, CandidateGates& gates,
                            std::uint64_t unlock_number) {
  if (coefficients_.use_concurrency_reduction) unlock_number_ = unlock_number;
  locked_ = locked_signals(order, gates);
  const net::StgPrefix& prefix = candidates_.prefix();
  Lits inputs, driven;
  for (const net::SignalId signal : prefix.visible_signals())
    (prefix.driven_signals().contains(signal) ? driven : inputs).push_back(~locked_[signal]);
  const std::uint64_t coefficient = coefficients_.non_locked_signals;
  add_term(count(inputs), 2 * coefficient);
  add_term(count(driven), 4 * coefficient);
  if (unlock_number_ != 0) add_term(sat::IntegerCircuit::constant(unlock_number_), coefficient);
}

void CostFormula::add_term(Lits number, std::uint64_t coefficient) {
  numbers_.push_back(std::move(number));
  weights_.push_back(coefficient);
}

// With no more bits than the bound needs.
Lits CostFormula::count(const Lits& lits) {
  Lits bits = sat::IntegerCircuit(formula_).count_ones(lits, group_);
  const auto length = static_cast<std::size_t>(std::bit_width(lits.size()));
  if (bits.size() > length) bits.resize(length);
  return bits;
}

void CostFormula::cost_terms(std::vector<Lits>& numbers,
                             std::vector<std::uint64_t>& coefficients) const {
  numbers.insert(numbers.end(), numbers_.begin(), numbers_.end());
  coefficients.insert(coefficients.end(), weights_.begin(), weights_.end());
}

Lits CostFormula::cost_bits() {
  return sat::IntegerCircuit(formula_).weighted_sum(weights_, numbers_, group_);
}

std::uint64_t CostFormula::non_locked() const {
  std::uint64_t number = unlock_number_;
  const net::StgPrefix& prefix = candidates_.prefix();
  for (std::uint32_t i = 0; i < locked_.size(); ++i) {
    const net::SignalId signal{i};
    if (!prefix.visible_signals().contains(signal) || formula_.is_true(locked_[signal])) continue;
    number += prefix.driven_signals().contains(signal) ? 4 : 2;
  }
  return number;
}

ResolutionCost CostFormula::evaluate(const Choice& chosen) const {
  const sat::IntegerCircuit circuit(formula_);
  ResolutionCost cost(coefficients_, insertions_of(candidates_, chosen));
  cost.delay = static_cast<std::uint64_t>(
      std::ranges::count_if(delaying_, [&](CandidateId candidate) { return chosen[candidate]; }));
  cost.logic = circuit.model_value(logic_);
  cost.non_locked = non_locked();
  cost.csc_cores = circuit.model_value(csc_cores_);
  cost.usc_cores = circuit.model_value(usc_cores_);
  return cost;
}

void evaluate_choice(const Candidates& candidates, const Choice& chosen, const CoreStore& cores,
                     ResolutionCost& cost) {
  cost.delay = 0;
  if (cost.coefficients.delay != 0)
    cost.delay = static_cast<std::uint64_t>(std::ranges::count_if(
        delaying_candidates(candidates), [&](CandidateId candidate) { return chosen[candidate]; }));
  const CoreCounts left = cores_left(cores, candidates, chosen);
  cost.csc_cores = cost.coefficients.csc_cores != 0 ? left.csc : 0;
  cost.usc_cores = cost.coefficients.usc_cores != 0 ? left.usc : 0;
}

void evaluate_result(const net::StgPrefix& prefix, const net::Signal& new_signal,
                     std::uint64_t unlock_number, TransformationCost& cost) {
  const CostCoefficients& coefficients = cost.coefficients;
  cost.logic = coefficients.logic != 0 ? logic_complexity(prefix, coefficients.pwr_of_2) : 0;
  cost.non_locked = 0;
  if (coefficients.non_locked_signals == 0) return;
  cost.non_locked = unlocked_weight(prefix, new_signal);
  if (coefficients.use_concurrency_reduction) cost.non_locked += unlock_number;
}

}  // namespace vorel::resolution
