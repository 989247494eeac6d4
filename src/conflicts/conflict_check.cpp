#include "conflicts/conflict_check.h"

#include "base/messages.h"

namespace vorel::conflicts {

ConflictCheck::ConflictCheck(const net::StgPrefix& prefix,
                             const configuration::SearchOptions& options,
                             results::VerdictMessages messages, Notes notes)
    : PairSearch(prefix, options, std::move(messages), notes),
      seen_pairs_(prefix,
                  [this](const Core& core) { return is_conflict(core.first, core.second); }) {}

void ConflictCheck::encode(sat::ClauseGroup group) {
  PairSearch::encode(group);
  for (const Core& core : seen_pairs_.cores()) block(core, group);
}

void ConflictCheck::add_code_constraint() {
  for (const net::SignalId signal : process().visible_signals()) {
    add_equivalence(formula(), first().code(signal), second().code(signal), sat::PermanentGroup);
  }
}

void ConflictCheck::add_any_of_differences(std::span<const std::pair<sat::Lit, sat::Lit>> pairs) {
  sat::Lits clause;
  for (const auto& [a, b] : pairs) {
    clause.push_back(formula().make_gate(sat::Gate(sat::GateXor, {a, b}), sat::PermanentGroup));
  }
  formula().add_clause(clause, sat::PermanentGroup);
}

bool ConflictCheck::search_all() {
  PairSearch::search_all();
  if (base::run_failed()) return false;
  for (const Core& core : seen_pairs_.cores()) add_solution(solution_of_pair(core));
  return !found().solutions.empty();
}

void ConflictCheck::record_and_block() {
  auto [one, other] = model_pair();
  if (!is_conflict(one, other)) {
    base::print_error("conflict check failed");
    return;
  }
  for (const Core& core : seen_pairs_.add(Core(std::move(one), std::move(other)))) {
    block(core, sat::PermanentGroup);
  }
}

bool ConflictCheck::validate(const results::Solution& solution) const {
  if (!SearchEngine::validate(solution)) return false;
  const auto [one, other] = pair_of(solution);
  if (is_conflict(one, other)) return true;
  base::print_error("conflict check failed");
  return false;
}

}  // namespace vorel::conflicts
