#include "conflicts/normalcy_check.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "conflicts/conflict_solution.h"
#include "conflicts/csc_check.h"

namespace vorel::conflicts {

NormalcyCheck::NormalcyCheck(const net::StgPrefix& prefix, const base::Params& params)
    : ConflictCheck(prefix, params, {"normalcy is violated", "there are no normalcy violations"}),
      hypothesis_(prefix, final_states()),
      violation_(prefix.internals_end) {
  warn_of_dummy_cutoffs();
  hypothesis_.make();
}

void NormalcyCheck::add_code_constraint() {
  for (std::uint32_t signal = 0; signal < process().internals_end; ++signal) {
    formula().add_binary(~first().code(signal), second().code(signal), sat::PermanentGroup);
  }
}

// The next value changes against the hypothesis while the code grows.
sat::Lit NormalcyCheck::violation(std::uint32_t signal) {
  sat::Lit& lit = violation_[signal];
  if (!lit.is_uninit()) return lit;
  const bool is_p = hypothesis_.is_p(signal);
  const sat::Lits changes{first().next_value(signal) ^ !is_p, second().next_value(signal) ^ is_p};
  return lit = formula().make_gate(sat::Gate(sat::GateAnd, changes), sat::PermanentGroup);
}

void NormalcyCheck::add_any_difference() {
  sat::Lits clause;
  for (std::uint32_t signal = first_candidate(); signal < end_candidate(); ++signal) {
    clause.push_back(violation(signal));
  }
  formula().add_clause(clause, sat::PermanentGroup);
}

void NormalcyCheck::add_candidate_difference(std::uint32_t candidate, sat::ClauseGroup group) {
  formula().add_unit(violation(candidate), group);
}

bool NormalcyCheck::search_one() {
  if (base::run_failed()) return false;
  return record_hypothesis_violation() || ConflictCheck::search_one();
}

bool NormalcyCheck::search_all() {
  if (base::run_failed()) return false;
  return record_hypothesis_violation() || ConflictCheck::search_all();
}

bool NormalcyCheck::search_least_cost() {
  if (base::run_failed()) return false;
  if (record_hypothesis_violation() || record_csc_conflict()) return true;
  return !base::run_failed() && ConflictCheck::search_least_cost();
}

std::unique_ptr<NormalcySolution> NormalcyCheck::make_solution(NormalcyViolation kind,
                                                               std::uint32_t signal) const {
  return std::make_unique<NormalcySolution>(output_configurations(), kind,
                                            process().signals[signal]->name);
}

void NormalcyCheck::add_evidence(NormalcySolution& solution,
                                 const TriggerEvidence& evidence) const {
  const auto events = configuration::events_of(process(), evidence.local_configuration);
  solution.add_evidence(configuration::trace_of<Event>(
                            configuration::firing_sequence<net::StgPrefix>(process(), events)),
                        configuration::trace_of<Event>(evidence.triggers));
}

bool NormalcyCheck::record_hypothesis_violation() {
  const NormalcyViolation kind = hypothesis_.violation();
  if (kind == NormalcyViolation::none) return false;
  const std::uint32_t signal = hypothesis_.violation_signal();
  auto solution = make_solution(kind, signal);
  if (kind == NormalcyViolation::mixed_triggers) {
    add_evidence(*solution, *hypothesis_.mixed()[signal]);
  } else {
    add_evidence(*solution, *hypothesis_.same_sign()[signal]);
    add_evidence(*solution, *hypothesis_.opposite_sign()[signal]);
  }
  add_solution(std::move(solution));
  return true;
}

bool NormalcyCheck::record_csc_conflict() {
  CscCheck check(process(), params(), CscCheck::Warnings::left_out);
  check.run();
  if (base::run_failed() || check.solutions().solutions.empty()) return false;
  const auto& conflict = static_cast<const ConflictSolution&>(*check.solutions().solutions.front());
  auto solution = std::make_unique<NormalcySolution>(
      output_configurations(), NormalcyViolation::csc_conflict, conflict.signal());
  solution->traces = conflict.traces;
  add_solution(std::move(solution));
  return true;
}

std::vector<std::uint32_t> NormalcyCheck::signals_of_model() {
  if (takes_candidates_in_turn()) return {candidate()};
  std::vector<std::uint32_t> signals;
  for (std::uint32_t signal = first_candidate(); signal < end_candidate(); ++signal) {
    if (formula().is_true(violation(signal))) signals.push_back(signal);
  }
  assert(!signals.empty());
  return signals;
}

void NormalcyCheck::record_solution() { record_violation_of(signals_of_model().front()); }

void NormalcyCheck::record_violation_of(std::uint32_t signal) {
  const auto [one, other] = model_pair();
  const bool is_csc_conflict = final_states().code(one) == final_states().code(other);
  auto solution = make_solution(
      is_csc_conflict ? NormalcyViolation::csc_conflict : NormalcyViolation::other, signal);
  if (!is_csc_conflict) {
    solution->first_not_p = hypothesis_.is_p(signal);
    add_evidence(*solution, *(solution->first_not_p ? hypothesis_.same_sign()
                                                    : hypothesis_.opposite_sign())[signal]);
  }
  for (const configuration::EventSet* set : {&one, &other}) {
    const auto events = configuration::events_of(process(), *set);
    solution->traces.push_back(configuration::trace_of<Event>(
        configuration::firing_sequence<net::StgPrefix>(process(), events)));
  }
  add_solution(std::move(solution));
}

// Other pairs with this difference say nothing new of these signals, but perhaps of others.
void NormalcyCheck::record_and_block() {
  const auto signals = signals_of_model();
  for (const std::uint32_t signal : signals) record_violation_of(signal);
  auto [one, other] = model_pair();
  const Core core(std::move(one), std::move(other));
  if (takes_candidates_in_turn()) {
    block(core, round_group());
    return;
  }
  sat::Lits other_violations;
  for (std::uint32_t signal = first_candidate(); signal < end_candidate(); ++signal) {
    if (!std::ranges::binary_search(signals, signal)) other_violations.push_back(violation(signal));
  }
  block(core, sat::PermanentGroup, other_violations);
}

std::unique_ptr<results::Solution> NormalcyCheck::solution_of_pair(const Core&) const {
  assert(false && "solutions are made from models");
  return nullptr;
}

bool NormalcyCheck::shows_violation(const NormalcySolution& solution) const {
  if (solution.kind() != NormalcyViolation::csc_conflict &&
      solution.kind() != NormalcyViolation::other)
    return true;  // what triggers show has been seen in the states themselves
  const std::size_t last = solution.traces.size() - 1;
  const configuration::EventSet one = configuration::event_set(
      configuration::events_of<net::StgPrefix>(process(), solution.traces[last - 1]));
  const configuration::EventSet other = configuration::event_set(
      configuration::events_of<net::StgPrefix>(process(), solution.traces[last]));
  const auto code = final_states().code(one), other_code = final_states().code(other);
  const auto signal = std::ranges::find(
      process().signals, solution.signal(), [](const auto& s) -> const auto& { return s->name; });
  assert(signal != process().signals.end());
  const bool next = final_states().next_value((*signal)->index, one);
  if (next == final_states().next_value((*signal)->index, other)) return false;
  if (solution.kind() == NormalcyViolation::csc_conflict) return code == other_code;
  return next == solution.first_not_p && std::ranges::equal(code, other_code, std::less_equal{});
}

bool NormalcyCheck::validate(const results::Solution& solution) const {
  if (!configuration::SearchEngine<net::StgPrefix>::validate(solution)) return false;
  if (shows_violation(static_cast<const NormalcySolution&>(solution))) return true;
  base::print_error("conflict check failed");
  return false;
}

}  // namespace vorel::conflicts
