#include "resolution/cost_formula.h"

#include <algorithm>

#include "resolution/critical_path.h"
#include "resolution/logic_complexity.h"
#include "resolution/signal_locks.h"
#include "resolution/trigger_formula.h"

namespace vorel::resolution {

using sat::Lit;
using sat::Lits;

namespace {

// At most the highest number.
std::uint64_t product_of(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t highest = ~std::uint64_t{0};
  return b != 0 && a > highest / b ? highest : a * b;
}

// What it counts if it is not locked with the new signal.
std::uint64_t weight_of(const net::StgPrefix& prefix, net::SignalId signal) {
  return prefix.driven_signals().contains(signal) ? 4 : 2;
}

}  // namespace

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
    : candidates_{candidates}, coefficients_{context.coefficients} {
  CandidateGates gates(candidates, literals, formula, group);
  if (coefficients_.delay != 0) add_delay(literals);
  if (coefficients_.logic != 0) {
    for (const auto& [lit, weight] : logic_literals(order, coefficients_.pwr_of_2, gates, group))
      literals_.push_back({lit, product_of(weight, coefficients_.logic)});
  }
  add_kinds(literals);
  if (coefficients_.non_locked_signals != 0) add_locks(order, gates, context.unlock_number);
  add_each(context.cores.csc_counter_literals, coefficients_.csc_cores);
  add_each(context.cores.usc_counter_literals, coefficients_.usc_cores);
}

void CostFormula::add_delay(const CandidateLits& literals) {
  for (const CandidateId candidate : delaying_candidates(candidates_))
    literals_.push_back({literals[candidate], coefficients_.delay});
}

void CostFormula::add_kinds(const CandidateLits& literals) {
  for (const CandidateId candidate : candidates_.all()) {
    const std::uint64_t coefficient = is_sequential(candidates_.insertion(candidate))
                                          ? coefficients_.seq_insertions
                                          : coefficients_.conc_insertions;
    if (coefficient != 0) literals_.push_back({literals[candidate], coefficient});
  }
}

void CostFormula::add_locks(const OccurrenceOrder& order, CandidateGates& gates,
                            std::uint64_t unlock_number) {
  if (!coefficients_.use_concurrency_reduction) unlock_number = 0;
  locked_ = locked_signals(order, gates);
  const net::StgPrefix& prefix = candidates_.prefix();
  const std::uint64_t coefficient = coefficients_.non_locked_signals;
  for (const net::SignalId signal : prefix.visible_signals())
    literals_.push_back({~locked_[signal], weight_of(prefix, signal) * coefficient});
  literals_.push_back({sat::LitTrue, product_of(unlock_number, coefficient)});
}

void CostFormula::add_each(const Lits& lits, std::uint64_t coefficient) {
  if (coefficient == 0) return;
  for (const Lit lit : lits) literals_.push_back({lit, coefficient});
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
