#include "conflicts/csc_check.h"

#include <algorithm>
#include <cassert>

#include "conflicts/conflict_solution.h"

namespace vorel::conflicts {

CscCheck::CscCheck(const net::StgPrefix& prefix, const configuration::SearchOptions& options,
                   Notes notes)
    : ConflictCheck(prefix, options,
                    {"CSC conflict has been detected", "there are no CSC conflicts"}, notes) {}

bool CscCheck::is_conflict(const configuration::EventSet& one,
                           const configuration::EventSet& other) const {
  const State state = state_after(one), other_state = state_after(other);
  return state.code() == other_state.code() &&
         state.excited_signals() != other_state.excited_signals();
}

// In turn, the first configuration is the one where the signal's next value is 0: which of the two
// is the larger one is open.
Inclusion CscCheck::inclusion() const {
  return takes_candidates_in_turn() ? Inclusion::either_in_other : Inclusion::first_in_second;
}

sat::Lits CscCheck::differences(const EncodedPair& pair,
                                std::span<const std::uint32_t> candidates) const {
  std::vector<std::pair<sat::Lit, sat::Lit>> next_values;
  for (const std::uint32_t candidate : candidates) {
    const net::SignalId signal = signal_of(candidate);
    next_values.emplace_back(pair.first.next_value(signal), pair.second.next_value(signal));
  }
  return differences_of(pair.formula, next_values);
}

void CscCheck::add_candidate_difference(const EncodedPair& pair, std::uint32_t candidate,
                                        sat::ClauseGroup group) const {
  pair.formula.add_unit(~pair.first.next_value(signal_of(candidate)), group);
  pair.formula.add_unit(pair.second.next_value(signal_of(candidate)), group);
}

std::unique_ptr<results::Solution> CscCheck::solution_for(net::SignalId signal) const {
  return std::make_unique<ConflictSolution>(options().output_configurations,
                                            base::element(process().signals, signal).name);
}

void CscCheck::record_solution() {
  conflict_signal_ = signal_of(differing_candidates().front());
  ConflictCheck::record_solution();
}

std::unique_ptr<results::Solution> CscCheck::new_solution() const {
  return solution_for(conflict_signal_);
}

// Two sorted lists that differ first differ in a signal that only one of them has: the smaller one.
std::unique_ptr<results::Solution> CscCheck::solution_of_pair(const Core& core) const {
  const auto one = state_after(core.first).excited_signals();
  const auto other = state_after(core.second).excited_signals();
  const auto [a, b] = std::ranges::mismatch(one, other);
  assert((a != one.end() || b != other.end()) && "the pair is in conflict");
  const bool is_in_one = b == other.end() || (a != one.end() && *a < *b);
  auto solution = solution_for(is_in_one ? *a : *b);
  add_traces(*solution, core.first, core.second);
  return solution;
}

}  // namespace vorel::conflicts
