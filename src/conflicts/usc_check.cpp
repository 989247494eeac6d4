#include "conflicts/usc_check.h"

#include "conflicts/conflict_solution.h"

namespace vorel::conflicts {

UscCheck::UscCheck(const net::StgPrefix& prefix, const base::Params& params)
    : ConflictCheck(prefix, params,
                    {"USC conflict has been detected", "there are no USC conflicts"}) {
  warn_of_dummy_cutoffs();
}

bool UscCheck::is_conflict(const configuration::EventSet& one,
                           const configuration::EventSet& other) const {
  if (final_states().code(one) != final_states().code(other)) return false;
  const auto marking = final_states().marking(one);
  if (!marking) return false;
  const auto other_marking = final_states().marking(other);
  return other_marking && *marking != *other_marking;
}

void UscCheck::prepare_encoding() {
  place_instances_.resize(process().places.size());
  for (const auto& condition : process().conditions) {
    if (condition->is_initial() || !condition->pre_event->is_cut_off())
      place_instances_[condition->place->index].push_back(condition.get());
  }
}

std::pair<sat::Lit, sat::Lit> UscCheck::marked(std::uint32_t place) {
  const auto& instances = place_instances_[place];
  return {first().marked(*process().places[place], instances),
          second().marked(*process().places[place], instances)};
}

void UscCheck::add_any_difference() {
  std::vector<std::pair<sat::Lit, sat::Lit>> pairs;
  for (std::uint32_t place = 0; place < end_candidate(); ++place) {
    if (!place_instances_[place].empty()) pairs.push_back(marked(place));
  }
  add_any_of_differences(pairs);
}

void UscCheck::add_candidate_difference(std::uint32_t candidate, sat::ClauseGroup group) {
  const auto [one, other] = marked(candidate);
  add_equivalence(formula(), one, ~other, group);
}

std::unique_ptr<results::Solution> UscCheck::new_solution() const {
  return std::make_unique<ConflictSolution>(output_configurations(), "");
}

std::unique_ptr<results::Solution> UscCheck::solution_of_pair(const Core& core) const {
  return with_traces(new_solution(), core);
}

}  // namespace vorel::conflicts
