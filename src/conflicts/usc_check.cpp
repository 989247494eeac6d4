#include "conflicts/usc_check.h"

#include "conflicts/conflict_solution.h"

namespace vorel::conflicts {

UscCheck::UscCheck(const net::StgPrefix& prefix, const configuration::SearchOptions& options,
                   Notes notes)
    : ConflictCheck(prefix, options,
                    {"USC conflict has been detected", "there are no USC conflicts"}, notes) {}

bool UscCheck::is_conflict(const configuration::EventSet& one,
                           const configuration::EventSet& other) const {
  const State state = state_after(one), other_state = state_after(other);
  if (state.code() != other_state.code()) return false;
  const auto marking = state.marking();
  if (!marking) return false;
  const auto other_marking = other_state.marking();
  return other_marking && *marking != *other_marking;
}

std::pair<sat::Lit, sat::Lit> UscCheck::marked(const EncodedPair& pair, std::uint32_t place) const {
  const net::StgPlace& marked = *process().places[place];
  return {pair.first.marked(marked), pair.second.marked(marked)};
}

sat::Lits UscCheck::differences(const EncodedPair& pair,
                                std::span<const std::uint32_t> candidates) const {
  std::vector<std::pair<sat::Lit, sat::Lit>> pairs;
  for (const std::uint32_t place : candidates) pairs.push_back(marked(pair, place));
  return differences_of(pair.formula, pairs);
}

void UscCheck::add_candidate_difference(const EncodedPair& pair, std::uint32_t candidate,
                                        sat::ClauseGroup group) const {
  const auto [one, other] = marked(pair, candidate);
  add_equivalence(pair.formula, one, ~other, group);
}

std::unique_ptr<results::Solution> UscCheck::new_solution() const {
  return std::make_unique<ConflictSolution>(options().output_configurations, "");
}

std::unique_ptr<results::Solution> UscCheck::solution_of_pair(const Core& core) const {
  auto solution = new_solution();
  add_traces(*solution, core.first, core.second);
  return solution;
}

}  // namespace vorel::conflicts
