#include "decomposition/subfunction_inserter.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <span>
#include <utility>

#include "base/clock.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "bdd/cover_bdd.h"
#include "conflicts/csc_check.h"
#include "decomposition/edge_states.h"
#include "resolution/cost_formula.h"
#include "resolution/general_insertions.h"
#include "resolution/logic_complexity.h"
#include "resolution/trigger_formula.h"
#include "sat/core_guided.h"
#include "sat/integer_circuit.h"

namespace vorel::decomposition {
namespace {

using resolution::CandidateId;
using sat::Lits;

constexpr int verbosity_of_results = 4, verbosity_of_details = 5;
// Where so many sets of edges break the coding, others for the same function are likely to.
constexpr std::size_t most_refused = 60;
// Sets of edges that are listed before the number of signals that wait for them is looked at, and
// of those with one number. A search for the least cost proves a bound for each literal of the
// cost, which takes longer than some sets.
constexpr std::size_t few_sets = 10, most_sets = 200;

bool tells(int verbosity) { return base::verbosity() >= verbosity; }

std::string subject(const bdd::Bdd& function, const std::vector<std::string>& names,
                    const std::string& context, bool local) {
  return "subfunction $1=" + toolkit::to_string(bdd::expression_of(function, names)) + " in [" +
         context + "]" + (local ? " LOCALLY" : "");
}

SubfunctionInsertion complemented(SubfunctionInsertion insertion) {
  insertion.initial_value ^= 1;
  return insertion;
}

}  // namespace

struct SubfunctionInserter::Step {
  // The engine must have started a step, and go no further while this is in use.
  Step(resolution::InsertionEngine& started, const configuration::EncodingOptions& options,
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

  resolution::InsertionEngine& engine;
  EdgeStates states;
  Lits acks;  // the number of signals that wait for the new one
  // That number, and what weighs less than one of them, the cost.
  std::vector<sat::WeightedLit> rating;
};

// The edges of a step that one function admits, and searches among them. The formula is left as it
// was found.
class SubfunctionInserter::Search {
 public:
  Search(SubfunctionInserter& inserter, Step& step, bdd::Bdd function,
         std::span<const resolution::SignalInsertion> refused)
      : inserter_{inserter},
        step_{step},
        formula_{step.engine.formula()},
        function_{std::move(function)},
        own_{formula_.new_group()},
        mode_{formula_.new_group()},
        listing_{formula_.new_group()} {
    step_.states.set_target(function_, inserter.names_);
    add_admissions();
    for (const resolution::SignalInsertion& edges : refused) exclude(edges, own_);
  }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;
  ~Search() {
    formula_.remove_group(own_);
    formula_.remove_group(mode_);
    formula_.remove_group(listing_);
  }

  bool has_edges() const { return has_edges_; }
  // The best; with `exact`, of those that compute the function.
  std::optional<SubfunctionInsertion> best(bool exact, bool local);
  std::vector<SubfunctionInsertion>& found() { return found_; }
  resolution::SignalInsertion admitted() const;

 private:
  // Edges that make a signal.
  struct EdgeSet {
    resolution::Choice choice;
    bool begins_at_1;
    std::uint64_t waiting;  // signals that wait for it
    std::uint64_t rating;
  };

  void add_admissions();
  void forget_listed();
  // Lists sets that are not listed yet; false if there are so many or more.
  bool list_sets(std::size_t most);
  bool has_more_sets(std::uint64_t least_waiting);
  // The cheapest that is acceptable: of those listed, of all, of those that so many wait for.
  std::optional<SubfunctionInsertion> best_of(std::vector<EdgeSet> sets);
  std::optional<SubfunctionInsertion> best_of_all();
  std::optional<SubfunctionInsertion> best_with(std::uint64_t waiting);
  std::optional<EdgeSet> cheapest_set();
  EdgeSet set_of_model() const;
  static bool has(const EdgeSet& set, const EdgeStates::Deviation& deviation);
  std::optional<SubfunctionInsertion> accept(const EdgeSet& set);
  SubfunctionInsertion rated(const resolution::Choice& choice,
                             const resolution::InsertedSignal& inserted, bool is_expected) const;
  void exclude(const resolution::Choice& choice, sat::ClauseGroup group);
  void exclude(const resolution::SignalInsertion& edges, sat::ClauseGroup group);

  SubfunctionInserter& inserter_;
  Step& step_;
  sat::CnfFormula& formula_;
  const bdd::Bdd function_;
  const sat::ClauseGroup own_;  // the clauses of this function
  sat::ClauseGroup mode_;       // those of a search for the best
  sat::Lit begins_at_1_ = sat::LitFalse;
  bool has_edges_ = false;  // of both kinds
  bool is_exact_ = false;
  std::vector<CandidateId> admitted_;
  std::vector<EdgeStates::Deviation> deviations_;  // of sets met in a search for the best
  std::vector<EdgeSet> listed_;                    // by it
  sat::ClauseGroup listing_;                       // excludes them
  std::vector<SubfunctionInsertion> found_;        // each set once
};

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
  sat::find_least_cost(formula_, step_.rating, resolution::unknown_cost, descent,
                       [&] { set = set_of_model(); });
  formula_.remove_group(descent);
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

SubfunctionInserter::SubfunctionInserter(net::StgPrefix& prefix, std::string base_name,
                                         const std::vector<std::string>& names,
                                         const base::Params& params)
    : prefix_{prefix},
      names_{names},
      options_{configuration::SearchOptions::of(params)},
      coefficients_{resolution::CostCoefficients::of(params)},
      engine_{prefix, std::move(base_name), options_.encoding.formula,
              params.get("concurrent_insertions")} {
  options_.method = 0;
  options_.all_solutions = 0;
  options_.min_cost = false;
  options_.inclusion = configuration::InclusionConstraints::by_net;
}

SubfunctionInserter::~SubfunctionInserter() = default;

SubfunctionInserter::Step& SubfunctionInserter::step() {
  if (step_ == nullptr) {
    engine_.start_step();
    step_ = std::make_unique<Step>(engine_, options_.encoding, coefficients_);
  }
  return *step_;
}

bool SubfunctionInserter::keeps_coding(const net::StgPrefix& prefix) const {
  conflicts::CscCheck check(prefix, options_, conflicts::Notes::left_out);
  check.run();
  return !base::run_failed() && check.solutions().solutions.empty();
}

std::optional<SubfunctionInsertion> SubfunctionInserter::find_best(Search& search, bool local,
                                                                   bool only_exact,
                                                                   InsertionResult& result) {
  if (!search.has_edges()) return std::nullopt;
  auto best = search.best(true, local);
  if (!best && !only_exact && !base::run_failed()) best = search.best(false, local);
  for (SubfunctionInsertion& insertion : search.found()) {
    const auto is_same = [&](const auto& other) { return other.is_same_as(insertion); };
    if (std::ranges::none_of(result.insertions, is_same))
      result.insertions.push_back(std::move(insertion));
  }
  return best;
}

resolution::SignalInsertion SubfunctionInserter::general_candidates(const bdd::Bdd& function) {
  if (!locks_) locks_ = resolution::transition_lock_relation(prefix_);
  std::vector<net::SignalId> signals;
  for (const net::SignalId signal : prefix_.visible_signals())
    for (const std::uint32_t variable : function.support())
      if (names_[variable] == base::element(prefix_.signals, signal).name)
        signals.push_back(signal);
  auto general = resolution::general_insertions(prefix_, *locks_, signals);
  if (general.empty()) return general;
  const resolution::Candidates candidates(prefix_, std::move(general));
  EdgeStates states(candidates, options_.encoding);
  states.set_target(function, names_);
  const auto admissions = states.admissions();
  resolution::SignalInsertion admitted;
  for (const CandidateId candidate : candidates.all())
    if (admissions[candidate] != Admission::none)
      admitted.push_back(candidates.insertion(candidate));
  return admitted;
}

std::optional<SubfunctionInsertion> SubfunctionInserter::find_best_general(
    const bdd::Bdd& function, bool local, resolution::SignalInsertion admitted,
    InsertionResult& result) {
  const resolution::SignalInsertion more = general_candidates(function);
  if (more.empty() || base::run_failed()) return std::nullopt;
  ++stats_.searches_of_general;
  admitted.insert(admitted.end(), more.begin(), more.end());  // the last kind
  resolution::InsertionEngine engine(prefix_, engine_.base_name(), options_.encoding.formula, 0);
  engine.start_step(std::move(admitted));
  Step wide(engine, options_.encoding, coefficients_);
  Search search(*this, wide, function, result.refused);
  if (base::run_failed()) return std::nullopt;
  auto best = find_best(search, local, true, result);
  stats_.general_found += best.has_value();
  return best;
}

bool SubfunctionInserter::is_in_time() const {
  if (!deadline_.is_over()) return true;
  if (!base::run_failed()) base::print_error("the time for a decomposition is over");
  return false;
}

// False after a reported failure.
bool SubfunctionInserter::compute_insertions(const bdd::Bdd& function, const std::string& context,
                                             bool local, InsertionResult& result) {
  if (!is_in_time()) return false;
  const base::AddedTime timer(stats_.seconds);
  Search search(*this, step(), function, result.refused);
  if (base::run_failed()) return false;
  if (tells(verbosity_of_details)) {
    std::cerr << "\n Computing the expected implementation field for\n $1="
              << toolkit::to_string(bdd::expression_of(function, names_)) << " in [" << context
              << ']';
  }
  InsertionResult::Slot& slot = local ? result.best_local : result.best;
  slot.insertion = find_best(search, local, false, result);
  if (!slot.insertion && !base::run_failed())
    slot.insertion = find_best_general(function, local, search.admitted(), result);
  if (base::run_failed()) return false;
  slot.is_computed = true;
  std::ranges::stable_sort(result.insertions, std::less<>());
  // What is best of all is best of the local ones if it is one of them; without any there is no
  // local one either.
  if (!local && (!slot.insertion || slot.insertion->is_local())) result.best_local = slot;
  return true;
}

std::optional<SubfunctionInsertion> SubfunctionInserter::insert(const bdd::Bdd& function,
                                                                const std::string& context,
                                                                bool local) {
  ++stats_.questions;
  const bdd::Bdd regular = function.is_complement() ? ~function : function;
  const std::string about =
      tells(verbosity_of_results) ? subject(regular, names_, context, local) : std::string();
  if (tells(verbosity_of_details)) std::cerr << "\n\nTrying to insert " << about;
  InsertionResult& result = cache_[regular];
  const InsertionResult::Slot& slot = local ? result.best_local : result.best;
  if (slot.is_computed) {
    ++stats_.cache_hits;
    if (tells(verbosity_of_details)) std::cerr << "\nThe result is retrieved from the cache";
  } else {
    if (base::verbosity() == verbosity_of_results) std::cerr << "\n\nTrying to insert " << about;
    if (!compute_insertions(regular, context, local, result)) return std::nullopt;
    if (tells(verbosity_of_results))
      std::cerr << '\n' << result.insertions.size() << " insertions for " << about;
    if (tells(verbosity_of_details)) {
      for (const SubfunctionInsertion& insertion : result.insertions)
        std::cerr << '\n'
                  << insertion.text() << (insertion.is_local() ? " LOCAL" : "")
                  << (insertion.expected_implementation ? " EXP_IMPL" : "")
                  << " cost=" << insertion.cost;
    }
  }
  if (tells(verbosity_of_results)) {
    if (slot.insertion)
      std::cerr << "\nThe computed best insertion " << slot.insertion->text();
    else
      std::cerr << "\nCannot insert a signal";
  }
  if (!slot.insertion || regular == function) return slot.insertion;
  return complemented(*slot.insertion);
}

void SubfunctionInserter::refuse(const bdd::Bdd& function, const SubfunctionInsertion& insertion) {
  ++stats_.refused;
  InsertionResult& result = cache_.at(function.is_complement() ? ~function : function);
  std::erase_if(result.insertions, [&](const auto& other) { return other.is_same_as(insertion); });
  result.refused.push_back(insertion.edges);
  const bool is_given_up = result.refused.size() >= most_refused;
  stats_.searches_given_up += is_given_up;
  result.best = result.best_local = {.is_computed = is_given_up, .insertion = std::nullopt};
}

resolution::InsertedSignal SubfunctionInserter::after(const SubfunctionInsertion& insertion) const {
  assert(step_ != nullptr && "the insertion was found for the STG as it is");
  return engine_.after_insertion(insertion.edges, insertion.initial_value);
}

void SubfunctionInserter::adopt(net::StgPrefix prefix) {
  cache_.clear();
  step_.reset();
  locks_.reset();
  engine_.adopt(std::move(prefix));
}

const InsertionResult* SubfunctionInserter::result_of(const bdd::Bdd& function) const {
  const auto entry = cache_.find(function.is_complement() ? ~function : function);
  return entry == cache_.end() ? nullptr : &entry->second;
}

}  // namespace vorel::decomposition
