#include "conflicts/conflict_check.h"

#include <algorithm>
#include <cassert>
#include <iostream>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "configuration/dummy_cutoffs.h"
#include "sat/integer_circuit.h"
#include "sat/least_cost.h"

namespace vorel::conflicts {
namespace {

constexpr std::uint32_t property_group = 1;  // the candidate of a round
constexpr std::uint32_t attempt_group = 2;   // of the descent to the least cost

bool has_no_conflicts(const net::StgPrefix& prefix) {
  return std::ranges::all_of(prefix.conditions,
                             [](const auto& condition) { return condition->postset.size() <= 1; });
}

std::uint64_t number_of(const std::vector<bool>& bits) {
  std::uint64_t value = 0;
  for (std::size_t i = bits.size(); i-- > 0;) value = 2 * value + (bits[i] ? 1 : 0);
  return value;
}

std::vector<bool> bits_of(std::uint64_t value, std::size_t count) {
  std::vector<bool> bits(count);
  for (std::size_t i = 0; i < count; ++i, value >>= 1) bits[i] = (value & 1u) != 0;
  assert(value == 0 && "the bits hold every cost");
  return bits;
}

}  // namespace

void add_equivalence(sat::CnfFormula& formula, sat::Lit a, sat::Lit b, sat::ClauseGroup group) {
  formula.add_binary(~a, b, group);
  formula.add_binary(a, ~b, group);
}

ConflictCheck::ConflictCheck(const net::StgPrefix& prefix, const base::Params& params,
                             results::VerdictMessages messages)
    : configuration::SearchEngine<net::StgPrefix>(prefix, params, std::move(messages)),
      conflict_free_{has_no_conflicts(prefix)},
      output_configurations_{params.get("output_configurations") != 0},
      method_{params.get("method") == 0 ? 2 : params.get("method")},
      structure_(prefix),
      final_states_(prefix, structure_.signal_events()),
      seen_pairs_(prefix,
                  [this](const Core& core) { return is_conflict(core.first, core.second); }) {
  this->params().set("method", method_);
  if (params.get("inclusion_constraints") != -1) return;
  // Where a signal is concurrent with itself, two configurations can have one code that the events
  // common to both have not.
  const bool is_sound = conflict_free_ && structure_.has_only_ordered_edges();
  if (is_sound) std::cout << "\nThe net is (dynamically) conflict-free: optimized method is used.";
  this->params().set("inclusion_constraints", is_sound ? 1 : 0);
}

void ConflictCheck::warn_of_dummy_cutoffs() const {
  if (configuration::has_dummy_cutoffs(process()))
    base::print_warning("there are dummy cut-offs; the result will not be reliable");
}

void ConflictCheck::seed(Core core) { seen_pairs_.seed(std::move(core)); }

void ConflictCheck::encode(sat::ClauseGroup group) {
  assert(group == sat::PermanentGroup && states_.empty() && "an engine encodes once");
  for (std::uint32_t i = 0; i < 2; ++i) {
    auto& vars = configuration(i);
    encode_configuration(vars, group);
    pair_.push_back(&vars);
    states_.push_back(std::make_unique<configuration::StateLiterals>(structure_, vars));
  }
  prepare_encoding();
  add_code_constraint();
  if (params().get("inclusion_constraints") == 1) {
    if (!conflict_free_) {
      base::print_warning(
          "+l is valid only for (dynamically) conflict-free nets; the result may be incorrect");
    }
    add_inclusion_constraints();
  }
  if (!takes_candidates_in_turn()) add_any_difference();
  for (const Core& core : seen_pairs_.cores()) block(core, sat::PermanentGroup);
}

void ConflictCheck::add_code_constraint() {
  for (std::uint32_t signal = 0; signal < process().internals_end; ++signal) {
    add_equivalence(formula(), first().code(signal), second().code(signal), sat::PermanentGroup);
  }
}

void ConflictCheck::add_inclusion_constraints() {
  const sat::Lit is_forward = inclusion() == Inclusion::first_in_second
                                  ? sat::LitTrue
                                  : sat::Lit(formula().new_var(false), false);
  for (const auto& event : process().events) {
    if (event->is_cut_off()) continue;
    const sat::Lit in_first = configuration::event_lit(configuration(0), *event);
    const sat::Lit in_second = configuration::event_lit(configuration(1), *event);
    formula().add_clause(sat::Lits{~in_first, in_second, ~is_forward}, sat::PermanentGroup);
    formula().add_clause(sat::Lits{~in_second, in_first, is_forward}, sat::PermanentGroup);
  }
}

void ConflictCheck::add_any_of_differences(std::span<const std::pair<sat::Lit, sat::Lit>> pairs) {
  sat::Lits clause;
  for (const auto& [a, b] : pairs) {
    clause.push_back(formula().make_gate(sat::Gate(sat::GateXor, {a, b}), sat::PermanentGroup));
  }
  formula().add_clause(clause, sat::PermanentGroup);
}

sat::Lit ConflictCheck::difference(std::uint32_t event) {
  auto& vars = configuration(0);
  sat::LitCell& cell = vars.event_aux[*process().events[event]];
  if (!cell.lit.is_uninit()) return cell.lit;
  const sat::Lits both{configuration::event_lit(vars, *process().events[event]),
                       configuration::event_lit(configuration(1), *process().events[event])};
  return formula().define_gate(cell, sat::GateXor, both, sat::PermanentGroup);
}

void ConflictCheck::block(const Core& core, sat::ClauseGroup group,
                          std::span<const sat::Lit> unless) {
  auto& cells = configuration(0).event_aux;
  if (cells.size() == 0) cells = base::IndexedBy<Event, sat::LitCell>(process().events.size());
  sat::Lits clause;
  for (const BlockedPairs& pairs : pairs_explained_by(process(), core, conflict_free_)) {
    clause.assign(unless.begin(), unless.end());
    for (const std::uint32_t event : pairs.different) clause.push_back(~difference(event));
    for (const std::uint32_t event : pairs.shared) clause.push_back(difference(event));
    formula().add_clause(clause, group);
  }
}

void ConflictCheck::for_each_round(const std::function<bool()>& round) {
  if (!takes_candidates_in_turn()) {
    round();
    return;
  }
  for (candidate_ = first_candidate(); candidate_ < end_candidate() && !base::run_failed();
       ++candidate_) {
    formula().renew_group(formula().group(property_group));
    add_candidate_difference(candidate_, round_group());
    if (!round()) return;
  }
}

sat::ClauseGroup ConflictCheck::round_group() const {
  return pair_.front()->formula.group(property_group);
}

bool ConflictCheck::search_one() {
  encode(sat::PermanentGroup);
  bool found = false;
  for_each_round([&] {
    found = formula().solve() && !base::run_failed();
    return !found;
  });
  if (found) record_solution();
  return found;
}

bool ConflictCheck::search_all() {
  encode(sat::PermanentGroup);
  // -1 stands for all: as an unsigned number, the highest limit.
  auto limit = static_cast<std::uint32_t>(params().get("all_solutions"));
  for_each_round([&] {
    for (; limit > 0 && !base::run_failed() && formula().solve(); --limit) record_and_block();
    return limit > 0;
  });
  if (!base::run_failed()) make_all_solutions();
  return !found().solutions.empty();
}

std::pair<configuration::EventSet, configuration::EventSet> ConflictCheck::model_pair() const {
  return {configuration::event_set(configuration::decode_events(process(), *pair_[0])),
          configuration::event_set(configuration::decode_events(process(), *pair_[1]))};
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

void ConflictCheck::make_all_solutions() {
  for (const Core& core : seen_pairs_.cores()) add_solution(solution_of_pair(core));
}

std::unique_ptr<results::Solution> ConflictCheck::with_traces(
    std::unique_ptr<results::Solution> solution, const Core& core) const {
  for (const configuration::EventSet* set : {&core.first, &core.second}) {
    const auto events = configuration::events_of(process(), *set);
    solution->traces.push_back(configuration::trace_of<Event>(
        configuration::firing_sequence<net::StgPrefix>(process(), events)));
  }
  return solution;
}

bool ConflictCheck::validate(const results::Solution& solution) const {
  if (!configuration::SearchEngine<net::StgPrefix>::validate(solution)) return false;
  assert(solution.traces.size() == 2);
  const auto events = [&](std::size_t i) {
    return configuration::event_set(
        configuration::events_of<net::StgPrefix>(process(), solution.traces[i]));
  };
  if (is_conflict(events(0), events(1))) return true;
  base::print_error("conflict check failed");
  return false;
}

// Rounds after the first solution only ask for something cheaper.
bool ConflictCheck::search_least_cost() {
  encode(sat::PermanentGroup);
  sat::Lits bits;
  const auto resolve = [this](std::span<const sat::Lit> cost, std::vector<bool>& values) {
    return sat::resolve_cost(formula(), cost, values, [this] { record_solution(); });
  };
  for_each_round([&] {
    if (!formula().solve() || base::run_failed()) return !base::run_failed();
    record_solution();
    const std::uint64_t cost = model_cost();
    if (bits.empty()) bits = cost_bits(sat::default_polarity);  // only those pay who find something
    std::vector<bool> values = bits_of(cost, bits.size());
    sat::minimise_cost(formula(), bits, values, resolve);
    formula().renew_group(formula().group(attempt_group));
    if (base::run_failed() || number_of(values) == 0) return false;
    sat::IntegerCircuit(formula()).assert_at_most(bits, number_of(values) - 1, sat::PermanentGroup);
    return true;
  });
  return !base::run_failed() && !found().solutions.empty();
}

std::uint64_t ConflictCheck::model_cost() const {
  const auto [one, other] = model_pair();
  return one.size() + other.size();
}

}  // namespace vorel::conflicts
