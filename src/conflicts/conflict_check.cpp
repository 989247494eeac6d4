#include "conflicts/conflict_check.h"

#include "base/messages.h"
#include "base/run_state.h"
#include "base/sort_unique.h"
#include "conflicts/conflict_solution.h"

namespace vorel::conflicts {
namespace {

// The edges that can fire, perhaps after dummies.
std::string enabled_edges(const State& state) {
  std::vector<const net::StgTransition*> edges;
  for (const auto& event : state.process().events) {
    if (!net::is_dummy(*event) && state.is_enabled(*event)) edges.push_back(event->transition);
  }
  base::sort_unique(edges, &net::StgTransition::index);
  std::string text;
  for (const auto* edge : edges) text += (text.empty() ? "" : ", ") + edge->name;
  return text.empty() ? "nothing" : text;
}

}  // namespace

ConflictCheck::ConflictCheck(const net::StgPrefix& prefix,
                             const configuration::SearchOptions& options,
                             results::VerdictMessages messages, Notes notes)
    : PairSearch(prefix, options, std::move(messages), notes),
      seen_pairs_(prefix,
                  [this](const Core& core) { return is_conflict(core.first, core.second); }) {}

void ConflictCheck::encode(sat::ClauseGroup group) {
  PairSearch::encode(group);
  for (const Core& core : seen_pairs_.cores()) block(core);
}

void ConflictCheck::add_code_constraint(const EncodedPair& pair, net::SignalId signal) const {
  add_equivalence(pair.formula, pair.first.code(signal), pair.second.code(signal),
                  sat::PermanentGroup);
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
  for (const Core& core : seen_pairs_.add(Core(std::move(one), std::move(other)))) block(core);
}

void ConflictCheck::finish() {
  if (base::verbosity() < 1) return;
  for (const auto& solution : found().solutions) {
    static_cast<ConflictSolution&>(*solution).diagnostics = diagnostics_of(*solution);
  }
}

std::string ConflictCheck::diagnostics_of(const results::Solution& solution) const {
  const auto [one, other] = pair_of(solution);
  const State state = state_after(one);
  const auto code = state.code();
  std::string text = "common code:";
  for (const net::SignalId signal : process().visible_signals()) {
    text += ' ' + base::element(process().signals, signal).name + (code[signal] ? "=1" : "=0");
  }
  return text + "\nenabled after the first trace: " + enabled_edges(state) +
         "\nenabled after the second trace: " + enabled_edges(state_after(other)) + '\n';
}

bool ConflictCheck::validate(const results::Solution& solution) const {
  if (!SearchEngine::validate(solution)) return false;
  const auto [one, other] = pair_of(solution);
  if (is_conflict(one, other)) return true;
  base::print_error("conflict check failed");
  return false;
}

}  // namespace vorel::conflicts
