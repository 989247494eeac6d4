#include "decomposition/subfunction_inserter.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <utility>

#include "base/clock.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "bdd/cover_bdd.h"
#include "conflicts/csc_check.h"
#include "decomposition/edge_states.h"
#include "decomposition/insertion_search.h"
#include "resolution/general_insertions.h"

namespace vorel::decomposition {
namespace {

using resolution::CandidateId;

constexpr int verbosity_of_results = 4, verbosity_of_details = 5;
// Where so many sets of edges break the coding, others for the same function are likely to.
constexpr std::size_t most_refused = 60;

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

}  // namespace vorel::decomposition
