#include "decomposition/insertion_search.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <iterator>
#include <utility>

#include "base/messages.h"
#include "base/run_state.h"
#include "resolution/cost_formula.h"
#include "resolution/logic_complexity.h"
#include "resolution/trigger_formula.h"
#include "sat/integer_circuit.h"

namespace vorel::decomposition {
namespace {

using resolution::CandidateId;
using sat::Lits;

constexpr int verbosity_of_details = 5;
// Sets of edges that are listed before the number of signals that wait for them is looked at, and
// of those with one number. A search for the least cost proves a bound for each literal of the
// cost, which takes longer than some sets.
constexpr std::size_t few_sets = 10, most_sets = 200;

bool tells(int verbosity) { return base::verbosity() >= verbosity; }

}  // namespace

SubfunctionInserter::Step::Step(resolution::InsertionEngine& started,
                                const configuration::EncodingOptions& options,
                                const resolution::CostCoefficients& coefficients)
    : engine{started}, states{engine.candidates(), options} {
  if (tells(verbosity_of_details)) {
    std::cerr << '\n' << engine.candidates().size() << " relevant general insertions computed:";
    for (const CandidateId candidate : engine.candidates().all())
      std::cerr << "\n " << resolution::to_text(engine.candidates().insertion(candidate));
  }
  sat::CnfFormula& formula = engine.formula();
  resolution::CandidateGates gates(engine.candidates(), engine.literals(), formula,
                                   sat::PermanentGroup);
  const Lits waiting = acknowledgements(engine.order(), gates);
  acks = sat::IntegerCircuit(formula).count_ones(waiting, sat::PermanentGroup);
  const resolution::CoreCounters no_cores;
  const resolution::CostFormula cost(engine.order(), engine.candidates(), engine.literals(),
                                     {.coefficients = coefficients, .cores = no_cores}, formula);
  rating = cost.literals();
  std::uint64_t most = 0;
  for (const sat::WeightedLit& weighted : rating) most += weighted.weight;
  for (const sat::Lit lit : waiting) rating.push_back({lit, most + 1});
  engine.sums().sums_emit();
}

void SubfunctionInserter::Search::add_admissions() {
  const resolution::InsertionEngine& engine = step_.engine;
  Lits rising, falling, excited_at_start;
  std::vector<std::pair<CandidateId, Admission>> admitted;
  std::string useful;
  const auto admissions = step_.states.admissions();
  for (const CandidateId candidate : engine.candidates().all()) {
    const sat::Lit chosen = engine.literals()[candidate];
    const Admission admission = admissions[candidate];
    if (admission == Admission::none) {
      formula_.add_unit(~chosen, own_);
      continue;
    }
    (admission == Admission::rising ? rising : falling).push_back(chosen);
    if (step_.states.is_excited_at_start(candidate)) excited_at_start.push_back(chosen);
    admitted.emplace_back(candidate, admission);
    admitted_.push_back(candidate);
    useful += "\n " + resolution::to_text(engine.candidates().insertion(candidate));
  }
  has_edges_ = !rising.empty() && !falling.empty();
  if (!has_edges_) return;
  formula_.add_clause(rising, own_);
  formula_.add_clause(falling, own_);
  begins_at_1_ = formula_.make_gate(sat::Gate(sat::GateOr, excited_at_start), own_) ^
                 step_.states.initial_value();
  // A rising edge comes after an even number of edges if the signal begins at 0.
  for (const auto& [candidate, admission] : admitted) {
    const sat::Lit not_chosen = ~engine.literals()[candidate];
    const sat::Lit needed = engine.parities()[candidate] ^ (admission == Admission::falling);
    formula_.add_clause(Lits{not_chosen, ~needed, begins_at_1_}, own_);
    formula_.add_clause(Lits{not_chosen, needed, ~begins_at_1_}, own_);
  }
  if (tells(verbosity_of_details)) std::cerr << "\nUseful insertions:" << useful;
}

std::optional<SubfunctionInsertion> SubfunctionInserter::Search::best(bool exact, bool local) {
  assert(has_edges());
  is_exact_ = exact;
  mode_ = formula_.renew_group(mode_);
  deviations_.clear();
  if (local) sat::IntegerCircuit(formula_).assert_equal(step_.acks, 1, mode_);
  forget_listed();
  if (list_sets(few_sets)) return best_of(listed_);
  std::optional<SubfunctionInsertion> best;
  for (std::uint64_t waiting = 0; !best && has_more_sets(waiting); ++waiting)
    best = best_with(waiting);
  return best;
}

void SubfunctionInserter::Search::forget_listed() {
  listed_.clear();
  listing_ = formula_.renew_group(listing_);
}

bool SubfunctionInserter::Search::list_sets(std::size_t most) {
  std::size_t count = 0;
  for (; count < most && formula_.solve(); ++count) {
    listed_.push_back(set_of_model());
    exclude(listed_.back().choice, listing_);
  }
  return count < most;
}

bool SubfunctionInserter::Search::has_more_sets(std::uint64_t least_waiting) {
  const auto is_left = [=](const EdgeSet& set) { return set.waiting >= least_waiting; };
  if (base::run_failed() || std::ranges::any_of(listed_, is_left)) return !base::run_failed();
  assert(least_waiting > 0 && "the first sets listed are forgotten later");
  const sat::ClauseGroup bound = formula_.new_group();
  sat::IntegerCircuit(formula_).assert_greater(step_.acks, least_waiting - 1, bound);
  const bool result = formula_.solve();
  formula_.remove_group(bound);
  return result;
}

std::optional<SubfunctionInsertion> SubfunctionInserter::Search::best_of(
    std::vector<EdgeSet> sets) {
  std::ranges::stable_sort(sets, {}, &EdgeSet::rating);
  for (const EdgeSet& set : sets) {
    if (base::run_failed()) break;
    const auto is_in = [&set](const auto& deviation) { return has(set, deviation); };
    if (std::ranges::any_of(deviations_, is_in)) continue;
    if (auto accepted = accept(set)) return accepted;
  }
  return std::nullopt;
}

std::optional<SubfunctionInsertion> SubfunctionInserter::Search::best_of_all() {
  while (const std::optional<EdgeSet> set = cheapest_set()) {
    if (base::run_failed()) break;
    if (auto accepted = accept(*set)) return accepted;
    if (base::run_failed()) break;
  }
  return std::nullopt;
}

std::optional<SubfunctionInsertion> SubfunctionInserter::Search::best_with(std::uint64_t waiting) {
  const sat::ClauseGroup number = formula_.new_group();
  sat::IntegerCircuit(formula_).assert_equal(step_.acks, waiting, number);
  std::optional<SubfunctionInsertion> best;
  if (list_sets(most_sets)) {
    std::vector<EdgeSet> sets;
    std::ranges::copy_if(listed_, std::back_inserter(sets),
                         [=](const EdgeSet& set) { return set.waiting == waiting; });
    best = best_of(std::move(sets));
  } else {
    forget_listed();
    best = best_of_all();
  }
  formula_.remove_group(number);
  return best;
}

SubfunctionInserter::Search::EdgeSet SubfunctionInserter::Search::set_of_model() const {
  return {.choice = step_.engine.choice(),
          .begins_at_1 = formula_.is_true(begins_at_1_),
          .waiting = sat::IntegerCircuit(formula_).model_value(step_.acks),
          .rating = sat::model_cost(formula_, step_.rating)};
}

std::optional<SubfunctionInserter::Search::EdgeSet> SubfunctionInserter::Search::cheapest_set() {
  std::optional<EdgeSet> set;
  const sat::ClauseGroup descent = formula_.new_group();
  sat::find_least_cost(
      formula_, step_.rating, resolution::unknown_cost, descent, [&] { set = set_of_model(); },
      inserter_.deadline_);
  formula_.remove_group(descent);
  if (!inserter_.is_in_time()) set.reset();  // it need not be the cheapest
  return set;
}

// With an odd number of these edges in a signal that begins at 0, and an even number in one that
// begins at 1, the next value is the function's there.
bool SubfunctionInserter::Search::has(const EdgeSet& set, const EdgeStates::Deviation& deviation) {
  bool next = set.begins_at_1;
  for (const CandidateId edge : deviation.edges) next ^= set.choice[edge];
  return next != deviation.value;
}

// Nothing if the set is refused; it does not come again then.
std::optional<SubfunctionInsertion> SubfunctionInserter::Search::accept(const EdgeSet& set) {
  const resolution::Choice& choice = set.choice;
  InserterStats& stats = inserter_.stats_;
  if (!inserter_.is_in_time()) return std::nullopt;
  ++stats.choices;
  if (is_exact_) {
    std::vector<CandidateId> edges;
    for (const CandidateId candidate : step_.engine.candidates().all())
      if (choice[candidate]) edges.push_back(candidate);
    if (const auto deviation = step_.states.deviation(edges, set.begins_at_1)) {
      ++stats.deviating;
      deviations_.push_back(*deviation);
      Lits lits{begins_at_1_};
      for (const CandidateId edge : deviation->edges) lits.push_back(step_.engine.literals()[edge]);
      const sat::Lit value = formula_.make_gate(sat::Gate(sat::GateXor, lits), mode_);
      formula_.add_unit(value ^ !deviation->value, mode_);
      return std::nullopt;
    }
    if (base::run_failed()) return std::nullopt;
  }
  const resolution::InsertedSignal inserted =
      step_.engine.after_insertion(choice, set.begins_at_1 ? 1 : 0);
  const bool is_expected = computes(inserted.prefix, inserted.signal, function_, inserter_.names_,
                                    inserter_.options_.encoding);
  if (base::run_failed()) return std::nullopt;
  if (is_exact_ && !is_expected) {
    ++stats.deviating;
    exclude(choice, mode_);
    return std::nullopt;
  }
  SubfunctionInsertion accepted = rated(choice, inserted, is_expected);
  assert(accepted.ack_count == set.waiting);
  const auto is_same = [&](const auto& other) { return other.is_same_as(accepted); };
  if (std::ranges::none_of(found_, is_same)) found_.push_back(accepted);
  return accepted;
}

void SubfunctionInserter::Search::exclude(const resolution::Choice& choice,
                                          sat::ClauseGroup group) {
  Lits clause;
  for (const CandidateId candidate : admitted_)
    clause.push_back(step_.engine.literals()[candidate] ^ choice[candidate]);
  formula_.add_clause(clause, group);
}

// Nothing is to be done if not all of them are candidates.
void SubfunctionInserter::Search::exclude(const resolution::SignalInsertion& edges,
                                          sat::ClauseGroup group) {
  const resolution::Candidates& candidates = step_.engine.candidates();
  resolution::Choice choice(candidates.size());
  std::size_t count = 0;
  for (const CandidateId candidate : candidates.all()) {
    choice[candidate] = std::ranges::any_of(edges, [&](const net::Insertion& edge) {
      return resolution::insertion_equal(edge, candidates.insertion(candidate));
    });
    count += choice[candidate];
  }
  if (count == edges.size()) exclude(choice, group);
}

resolution::SignalInsertion SubfunctionInserter::Search::admitted() const {
  resolution::SignalInsertion insertions;
  for (const CandidateId candidate : admitted_)
    insertions.push_back(step_.engine.candidates().insertion(candidate));
  return insertions;
}

SubfunctionInsertion SubfunctionInserter::Search::rated(const resolution::Choice& choice,
                                                        const resolution::InsertedSignal& inserted,
                                                        bool is_expected) const {
  const resolution::Candidates& candidates = step_.engine.candidates();
  const resolution::TriggerSignals triggers = resolution::trigger_signals(inserted.prefix);
  const net::Signal& signal = base::element(inserted.prefix.signals, inserted.signal);
  SubfunctionInsertion result{.edges = insertions_of(candidates, choice),
                              .initial_value = signal.initial_value,
                              .expected_implementation = is_expected,
                              .triggers = {}};
  for (const net::SignalId other : inserted.prefix.driven_signals())
    if (other != inserted.signal && std::ranges::count(triggers[other], inserted.signal) != 0)
      ++result.ack_count;
  for (const net::SignalId trigger : triggers[inserted.signal])
    result.triggers.push_back(base::element(inserted.prefix.signals, trigger).name);
  resolution::ResolutionCost cost(inserter_.coefficients_, result.edges);
  evaluate_choice(candidates, choice, {}, cost);
  evaluate_result(inserted.prefix, signal, 0, cost);
  result.delay = cost.delay;
  result.logic_complexity = cost.logic;
  result.non_locked = cost.non_locked;
  result.cost = cost.total();
  return result;
}

}  // namespace vorel::decomposition
