#include "conflicts/normalcy_check.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "conflicts/csc_check.h"

namespace vorel::conflicts {

NormalcyCheck::NormalcyCheck(const net::StgPrefix& prefix,
                             const configuration::SearchOptions& options)
    : PairSearch(prefix, options, {"normalcy is violated", "there are no normalcy violations"},
                 Notes::given),
      hypothesis_(structure()) {
  hypothesis_.make();
}

void NormalcyCheck::add_code_constraint(const EncodedPair& pair, net::SignalId signal) const {
  pair.formula.add_binary(~pair.first.code(signal), pair.second.code(signal), sat::PermanentGroup);
}

// The next value changes against the hypothesis while the code grows.
sat::Lit NormalcyCheck::violation(const EncodedPair& pair, net::SignalId signal) const {
  const bool is_p = hypothesis_.is_p(signal);
  const sat::Lits changes{pair.first.next_value(signal) ^ !is_p,
                          pair.second.next_value(signal) ^ is_p};
  return pair.formula.make_gate(sat::Gate(sat::GateAnd, changes), sat::PermanentGroup);
}

sat::Lits NormalcyCheck::differences(const EncodedPair& pair,
                                     std::span<const std::uint32_t> candidates) const {
  sat::Lits lits;
  for (const std::uint32_t candidate : candidates)
    lits.push_back(violation(pair, signal_of(candidate)));
  return lits;
}

void NormalcyCheck::add_candidate_difference(const EncodedPair& pair, std::uint32_t candidate,
                                             sat::ClauseGroup group) const {
  pair.formula.add_unit(violation(pair, signal_of(candidate)), group);
}

bool NormalcyCheck::search_one() {
  if (base::run_failed()) return false;
  return record_hypothesis_violation() || PairSearch::search_one();
}

bool NormalcyCheck::search_all() {
  if (base::run_failed()) return false;
  return record_hypothesis_violation() || PairSearch::search_all();
}

bool NormalcyCheck::search_least_cost() {
  if (base::run_failed()) return false;
  if (record_hypothesis_violation() || record_csc_conflict()) return true;
  return !base::run_failed() && PairSearch::search_least_cost();
}

std::unique_ptr<NormalcySolution> NormalcyCheck::make_solution(NormalcyViolation kind,
                                                               net::SignalId signal) const {
  return std::make_unique<NormalcySolution>(options().output_configurations, kind,
                                            base::element(process().signals, signal).name);
}

void NormalcyCheck::add_evidence(NormalcySolution& solution,
                                 const TriggerEvidence& evidence) const {
  const auto events = configuration::events_of(process(), evidence.local_configuration);
  solution.add_evidence(configuration::trace_to<net::StgPrefix>(process(), events),
                        configuration::trace_of<Event>(evidence.triggers));
}

bool NormalcyCheck::record_hypothesis_violation() {
  const NormalcyViolation kind = hypothesis_.violation();
  if (kind == NormalcyViolation::none) return false;
  const net::SignalId signal = hypothesis_.violation_signal();
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
  CscCheck check(process(), options(), Notes::left_out);
  check.run();
  if (base::run_failed() || check.solutions().solutions.empty()) return false;
  auto solution = make_solution(NormalcyViolation::csc_conflict, check.conflict_signal());
  solution->traces = check.solutions().solutions.front()->traces;
  const auto [one, other] = pair_of(*solution);
  if (!check.is_conflict(one, other)) {
    base::print_error("conflict check failed");
    return false;
  }
  add_solution(std::move(solution));
  return true;
}

void NormalcyCheck::record_solution() {
  record_violation_of(signal_of(differing_candidates().front()));
}

// What the model says is looked up in the two states before it is believed.
void NormalcyCheck::record_violation_of(net::SignalId signal) {
  const auto [one, other] = model_pair();
  const State state = state_after(one), other_state = state_after(other);
  const auto code = state.code(), other_code = other_state.code();
  const bool is_p = hypothesis_.is_p(signal);
  const bool refutes = state.next_value(signal) == is_p && other_state.next_value(signal) != is_p &&
                       std::ranges::equal(code, other_code, std::less_equal{});
  if (!refutes) {
    base::print_error("conflict check failed");
    return;
  }
  const bool is_csc_conflict = code == other_code;
  auto solution = make_solution(
      is_csc_conflict ? NormalcyViolation::csc_conflict : NormalcyViolation::other, signal);
  if (!is_csc_conflict) {
    solution->first_not_p = is_p;
    add_evidence(*solution,
                 *(is_p ? hypothesis_.same_sign() : hypothesis_.opposite_sign())[signal]);
  }
  add_traces(*solution, one, other);
  add_solution(std::move(solution));
}

// Other pairs with this difference say nothing new of these signals, but perhaps of others.
void NormalcyCheck::record_and_block() {
  const auto candidates = differing_candidates();
  for (const std::uint32_t candidate : candidates) record_violation_of(signal_of(candidate));
  auto [one, other] = model_pair();
  const Core core(std::move(one), std::move(other));
  if (takes_candidates_in_turn()) {
    block_in_round(core);
  } else {
    block(core, &candidates);
  }
}

}  // namespace vorel::conflicts
