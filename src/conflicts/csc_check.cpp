#include "conflicts/csc_check.h"

#include <algorithm>
#include <cassert>

#include "conflicts/conflict_solution.h"

namespace vorel::conflicts {

CscCheck::CscCheck(const net::StgPrefix& prefix, const base::Params& params, Warnings warnings)
    : ConflictCheck(prefix, params,
                    {"CSC conflict has been detected", "there are no CSC conflicts"}) {
  if (warnings == Warnings::given) warn_of_dummy_cutoffs();
}

bool CscCheck::is_conflict(const configuration::EventSet& one,
                           const configuration::EventSet& other) const {
  const configuration::FinalStates& states = final_states();
  return states.code(one) == states.code(other) &&
         states.excited_signals(one) != states.excited_signals(other);
}

// In turn, the first configuration is the one where the signal's next value is 0: which of the two
// is the larger one is open.
Inclusion CscCheck::inclusion() const {
  return takes_candidates_in_turn() ? Inclusion::either_in_other : Inclusion::first_in_second;
}

void CscCheck::add_any_difference() {
  for (std::uint32_t signal = first_candidate(); signal < end_candidate(); ++signal) {
    next_values_.emplace_back(first().next_value(signal), second().next_value(signal));
  }
  add_any_of_differences(next_values_);
}

void CscCheck::add_candidate_difference(std::uint32_t candidate, sat::ClauseGroup group) {
  formula().add_unit(~first().next_value(candidate), group);
  formula().add_unit(second().next_value(candidate), group);
}

std::uint32_t CscCheck::signal_of_model() const {
  if (takes_candidates_in_turn()) return candidate();
  const auto is_different = [this](const auto& values) {
    return model_value(values.first) != model_value(values.second);
  };
  const auto found = std::ranges::find_if(next_values_, is_different);
  assert(found != next_values_.end());
  return first_candidate() + static_cast<std::uint32_t>(found - next_values_.begin());
}

std::unique_ptr<results::Solution> CscCheck::solution_for(std::uint32_t signal) const {
  return std::make_unique<ConflictSolution>(output_configurations(),
                                            process().signals[signal]->name);
}

std::unique_ptr<results::Solution> CscCheck::new_solution() const {
  return solution_for(signal_of_model());
}

// Two sorted lists that differ first differ in a signal that only one of them has: the smaller one.
std::unique_ptr<results::Solution> CscCheck::solution_of_pair(const Core& core) const {
  const auto signals = configuration::symmetric_difference(
      final_states().excited_signals(core.first), final_states().excited_signals(core.second));
  assert(!signals.empty() && "the pair is in conflict");
  return with_traces(solution_for(signals.front()), core);
}

}  // namespace vorel::conflicts
