#include "resolution/resolution_engine.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <map>
#include <utility>

#include "base/messages.h"
#include "base/run_state.h"
#include "conflicts/csc_check.h"
#include "conflicts/usc_check.h"
#include "formats/g_writer.h"
#include "resolution/apply_reduction.h"
#include "resolution/core_adjacency.h"
#include "resolution/core_computation.h"
#include "resolution/core_update.h"
#include "resolution/cost_formula.h"
#include "resolution/implicit_places.h"
#include "resolution/reduction_cost.h"
#include "resolution/reductions.h"
#include "resolution/resolution_solution.h"
#include "resolution/signal_locks.h"
#include "sat/core_guided.h"
#include "sat/enumeration.h"

namespace vorel::resolution {
namespace {

constexpr std::string_view signal_name = "csc";
constexpr int verbosity_of_steps = 3;  // the STG after each step is kept
// Resolving one conflict can make another. A loop that goes around in a circle must end.
constexpr std::size_t most_steps_without_progress = 5;

conflicts::KeepCore as_predicate(const conflicts::ConflictCheck& check) {
  return
      [&check](const conflicts::Core& core) { return check.is_conflict(core.first, core.second); };
}

configuration::EventSet renumbered(const configuration::EventSet& set,
                                   const net::NewNumbers<net::StgPrefix::Event>& numbers) {
  configuration::EventSet result;
  for (const configuration::StgEventId event : set) result.push_back(numbers[event]);
  std::ranges::sort(result);
  return result;
}

}  // namespace

ResolutionEngine::ResolutionEngine(net::StgPrefix& prefix, const base::Params& params,
                                   std::string file_name)
    : prefix_{prefix},
      options_{configuration::SearchOptions::of(params)},
      coefficients_{CostCoefficients::of(params)},
      uses_reductions_{params.get("use_concurrency_reduction") != 0},
      file_name_{std::move(file_name)},
      insertions_{prefix, std::string(signal_name), options_.encoding.formula,
                  params.get("concurrent_insertions")},
      fewest_conflicts_{std::numeric_limits<std::size_t>::max()} {}

void ResolutionEngine::run() {
  if (!prepare_for_insertions(prefix_)) return;
  if (options_.all_solutions != 0) {
    suggest_all();
  } else if (options_.min_cost) {
    resolve_all();
  } else {
    suggest_one();
  }
}

bool ResolutionEngine::find_cores() {
  if (!compute_cores(prefix_, options_, std::exchange(notes_, conflicts::Notes::left_out),
                     store_.cores))
    return false;
  if (store_.cores.empty()) return false;
  base::print_formatted(base::notes_stream(), "\n Encoding conflicts detected: %u core(s)\n",
                        static_cast<std::uint32_t>(store_.cores.size()));
  classify_cores();
  return true;
}

void ResolutionEngine::classify_cores() {
  const conflicts::CscCheck csc(prefix_, options_, conflicts::Notes::left_out);
  const conflicts::UscCheck usc(prefix_, options_, conflicts::Notes::left_out);
  const conflicts::KeepCore is_csc = as_predicate(csc), is_usc = as_predicate(usc);
  store_.is_csc.clear();
  for (const conflicts::Core& core : store_.cores) store_.is_csc.push_back(is_csc(core));
  print_adjacency(base::notes_stream(), store_.cores.size(),
                  usc_arcs(prefix_, store_.cores, is_usc, is_csc));
}

std::vector<ResolutionCost> ResolutionEngine::rated_reductions() const {
  if (!uses_reductions_) return {};
  std::vector<ResolutionCost> costs = evaluate_reductions(
      prefix_, store_, coefficients_, reductions(prefix_, options_.encoding.formula));
  std::multimap<std::uint64_t, ResolutionCost*> by_total;  // in the order given where equal
  for (ResolutionCost& cost : costs) by_total.emplace(cost.total(), &cost);
  std::vector<ResolutionCost> sorted;
  for (const auto& [total, cost] : by_total) sorted.push_back(std::move(*cost));
  return sorted;
}

CoreCounters ResolutionEngine::encode_step() {
  if (uses_reductions_ && coefficients_.non_locked_signals != 0)
    unlock_number_ = lock_numbers(prefix_).unlocked;
  insertions_.start_step();
  return require_progress(store_, insertions_.candidates(), insertions_.literals(),
                          insertions_.formula(), insertions_.sums());
}

void ResolutionEngine::add_solution(const ResolutionCost& cost) {
  report_.add(std::make_unique<ResolutionSolution>(cost));
}

ResolutionCost ResolutionEngine::rate(const Choice& choice, const InsertedSignal& result) const {
  ResolutionCost cost(coefficients_, insertions_of(insertions_.candidates(), choice));
  evaluate_choice(insertions_.candidates(), choice, store_, cost);
  evaluate_result(result.prefix, base::element(result.prefix.signals, result.signal),
                  unlock_number_, cost);
  return cost;
}

void ResolutionEngine::suggest_one() {
  if (!find_cores()) return;
  const std::vector<ResolutionCost> rated = rated_reductions();
  if (base::run_failed()) return;
  if (!rated.empty()) return add_solution(rated.front());
  encode_step();
  insertions_.sums().sums_emit();
  if (base::run_failed() || !insertions_.formula().solve()) return;
  const Choice choice = insertions_.choice();
  add_solution(rate(choice, insertions_.after_insertion(choice)));
}

void ResolutionEngine::suggest_all() {
  if (!find_cores()) return;
  std::uint32_t limit = options_.limit();
  for (const ResolutionCost& cost : rated_reductions()) {
    if (limit == 0) return;
    add_solution(cost);
    --limit;
  }
  if (base::run_failed()) return;
  encode_step();
  insertions_.sums().sums_emit();
  if (base::run_failed() || limit == 0) return;
  const auto& literals = insertions_.literals();
  sat::enumerate(
      insertions_.formula(), sat::Lits(literals.begin(), literals.end()),
      insertions_.formula().group(0),
      [this](const sat::LiteralCube&) {
        const Choice choice = insertions_.choice();
        add_solution(rate(choice, insertions_.after_insertion(choice)));
      },
      limit);
}

// An insertion has to beat the cheapest reduction.
std::optional<ResolutionEngine::RatedChoice> ResolutionEngine::cheapest_choice(
    const ResolutionCost* incumbent) {
  const CoreCounters counters = encode_step();
  sat::CnfFormula& formula = insertions_.formula();
  CostFormula cost(
      insertions_.order(), insertions_.candidates(), insertions_.literals(),
      {.coefficients = coefficients_, .cores = counters, .unlock_number = unlock_number_}, formula);
  insertions_.sums().sums_emit();
  Choice choice;
  const std::optional<std::uint64_t> total = sat::find_least_cost(
      formula, cost.literals(), incumbent ? incumbent->total() : unknown_cost, sat::PermanentGroup,
      [&] { choice = insertions_.choice(); }, deadline_);
  if (!total) return std::nullopt;
  return RatedChoice{.choice = std::move(choice), .total = *total};
}

std::optional<ResolutionEngine::Best> ResolutionEngine::best_transformation() {
  const std::vector<ResolutionCost> rated = rated_reductions();
  if (base::run_failed()) return std::nullopt;
  const ResolutionCost* const incumbent = rated.empty() ? nullptr : &rated.front();
  const std::optional<RatedChoice> found = cheapest_choice(incumbent);
  if (base::run_failed() || (!found && deadline_.is_over())) return std::nullopt;
  if (found) {
    InsertedSignal inserted = insertions_.after_insertion(found->choice);
    ResolutionCost cost = rate(found->choice, inserted);
    assert(cost.total() == found->total && "the formula counts what the result has");
    return Best{std::move(cost), std::move(inserted)};
  }
  if (incumbent != nullptr) return Best{*incumbent, std::nullopt};
  return std::nullopt;
}

void ResolutionEngine::resolve_all() {
  while (find_cores() && makes_progress() && !deadline_.is_over()) {
    std::optional<Best> best = best_transformation();
    if (!best) break;
    results::Report step;
    step.add(std::make_unique<ResolutionSolution>(best->cost));
    step.print(base::notes_stream(),
               {.found = "suggested a transformation", .empty = "no transformation computed"});
    apply(std::move(*best));
    if (base::run_failed()) return;
    if (!save_step()) return;
  }
  if (base::run_failed()) return;
  if (store_.cores.empty()) {
    save(file_name_);
  } else {
    base::print_warning("failed to resolve some of the encoding conflicts");
  }
}

bool ResolutionEngine::makes_progress() {
  const auto conflicts = static_cast<std::size_t>(std::ranges::count(store_.is_csc, true));
  if (conflicts < fewest_conflicts_) {
    fewest_conflicts_ = conflicts;
    steps_without_progress_ = 0;
    return true;
  }
  return ++steps_without_progress_ <= most_steps_without_progress;
}

void ResolutionEngine::apply(Best best) {
  AppliedStep& step = applied_.emplace_back(TransformationText(best.cost), std::string());
  if (!best.inserted) {
    const Reduction& reduction = std::get<Reduction>(best.cost.transformation);
    if (!apply_reduction(prefix_, reduction) ||
        !remove_implicit_places(prefix_, options_.encoding.formula))
      return;
    store_.cores.clear();
    ++reductions_applied_;
    return;
  }
  for (conflicts::Core& core : store_.cores) {
    core = conflicts::Core(renumbered(core.first, best.inserted->numbers.events),
                           renumbered(core.second, best.inserted->numbers.events));
  }
  const net::SignalId signal = best.inserted->signal;
  step.signal = base::element(best.inserted->prefix.signals, signal).name;
  insertions_.adopt(std::move(best.inserted->prefix));
  ++signals_inserted_;
  const conflicts::UscCheck usc(prefix_, options_, conflicts::Notes::left_out);
  store_.cores = updated_cores(prefix_, store_.cores, signal, as_predicate(usc));
}

bool ResolutionEngine::save(const std::string& base_name) const {
  return file_name_.empty() || formats::save_g_and_mci(prefix_, base_name);
}

bool ResolutionEngine::save_step() const {
  return base::verbosity() < verbosity_of_steps ||
         save(file_name_ + std::to_string(signals_inserted_ + reductions_applied_));
}

std::string ResolutionEngine::empty_message() const {
  const std::string verdict =
      store_.cores.empty() ? "all conflicts resolved" : "cannot make further progress";
  return verdict + " (" + std::to_string(signals_inserted_) + " signal insertion(s) and " +
         std::to_string(reductions_applied_) + " concurrency reduction(s) applied)";
}

void ResolutionEngine::report(const std::string& output) const {
  results::deliver(report_, {.found = "suggested a transformation", .empty = empty_message()},
                   output);
}

void ResolutionEngine::print_statistics(std::ostream& stream) const {
  stream << '\n';
  insertions_.formula().print_size(stream);
}

}  // namespace vorel::resolution
