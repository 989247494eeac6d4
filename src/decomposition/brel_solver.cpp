#include "decomposition/brel_solver.h"

#include <algorithm>
#include <utility>

#include "base/clock.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd;

// Smaller relations are searched quickly, and cutting branches by an estimate would lose solutions.
constexpr std::size_t most_variables_uncut = 10;

// The variables that the relation depends on.
BrelRelation needed_part(const BrelRelation& whole) {
  const std::vector<std::uint32_t> support = whole.relation.support();
  const auto is_needed = [&support](const Bdd& variable) {
    return std::ranges::binary_search(support, variable.variable());
  };
  BrelRelation part{whole.relation, {}, {}};
  std::ranges::copy_if(whole.inputs, std::back_inserter(part.inputs), is_needed);
  std::ranges::copy_if(whole.outputs, std::back_inserter(part.outputs), is_needed);
  assert(part.inputs.size() + part.outputs.size() == support.size() &&
         "a relation between its inputs and its outputs");
  return part;
}

std::vector<std::size_t> positions_in(const std::vector<Bdd>& list, const std::vector<Bdd>& part) {
  std::vector<std::size_t> positions;
  for (std::size_t i = 0, j = 0; i < list.size() && j < part.size(); ++i)
    if (list[i] == part[j]) positions.push_back(i), ++j;
  return positions;
}

}  // namespace

BrelSolver::BrelSolver(const BrelRelation& relation, const BrelOptions& options,
                       BrelCallbacks callbacks)
    : options_{options},
      callbacks_{std::move(callbacks)},
      needed_{needed_part(relation)},
      output_number_{positions_in(relation.outputs, needed_.outputs)},
      output_count_{relation.outputs.size()},
      algebra_{needed_.inputs, needed_.outputs},
      trace_{options, relation},
      start_{base::ticks_now()} {}

std::vector<Bdd> BrelSolver::completed(const std::vector<Bdd>& functions) const {
  std::vector<Bdd> result(output_count_, Bdd(false));
  for (std::size_t i = 0; i < functions.size(); ++i) result[output_number_[i]] = functions[i];
  return result;
}

std::vector<Bdd> BrelSolver::needed_functions(const BrelSolution& solution) const {
  std::vector<Bdd> functions;
  for (const std::size_t number : output_number_) functions.push_back(solution.functions[number]);
  return functions;
}

void BrelSolver::store(const std::vector<Bdd>& functions) {
  std::vector<Bdd> solution = completed(functions);
  if (!known_solutions_.insert(solution).second) return;
  const double cost = callbacks_.solution_found(solution);
  trace_.tell_solution(cost, solution);
  ++result_.found;
  auto& stored = result_.solutions;
  const auto place =
      std::ranges::upper_bound(stored, cost, callbacks_.compare, &BrelSolution::cost);
  stored.insert(place, {std::move(solution), cost});
  if (stored.size() > std::max(options_.stored_solutions, 1u)) stored.pop_back();
}

bool BrelSolver::limit_is_reached() const {
  if (result_.explored >= options_.max_explored) return true;
  const double milliseconds = base::seconds_of(base::ticks_now() - start_) * 1e3;
  return options_.cpu_limit_ms >= 0 && milliseconds > options_.cpu_limit_ms;
}

bool BrelSolver::is_passed_over(const BrelNode& node, double cost) {
  if (!result_.solutions.empty() && algebra_.variable_count() > most_variables_uncut) {
    const double best = result_.solutions.front().cost;
    // In breadth, what costs as much as the best may still be better when it is found.
    if (options_.breadth_first ? callbacks_.compare(best, cost) : !callbacks_.compare(cost, best))
      return true;
  }
  return options_.use_cache && !known_relations_.insert(node.relation).second;
}

void BrelSolver::explore(BrelNode node) {
  const std::vector<Bdd> minimum = algebra_.incompatible_minimum(node.relation);
  const std::vector<Bdd> whole_minimum = completed(minimum);
  const double cost = callbacks_.cost(whole_minimum);
  trace_.tell_minimum(node.label, cost, whole_minimum);
  if (is_passed_over(node, cost)) {
    ++result_.cached;
    return;
  }
  ++result_.explored;
  result_.max_depth = std::max(result_.max_depth, node.depth);
  const Bdd conflict = algebra_.conflict(node.relation, minimum);
  if (conflict.is_false()) return store(minimum);
  if (options_.breadth_first && options_.store_all) store(algebra_.greedy_solution(node.relation));
  split(std::move(node), conflict);
}

void BrelSolver::split(BrelNode node, const Bdd& conflict) {
  const Bdd point = algebra_.lowest_point(conflict);
  const std::size_t output = algebra_.free_output(node.relation, point);
  const auto part = [&](bool value) {
    const Bdd& variable = needed_.outputs[output];
    BrelNode child{node.relation & (~point | (value ? variable : ~variable)), node.depth + 1, {}};
    if (options_.trace)
      child.label =
          node.label + "-" + std::to_string(output_number_[output]) + (value ? "-1" : "-0");
    return child;
  };
  if (options_.breadth_first) {
    pending_.push_back(part(false));
    pending_.push_back(part(true));
  } else {
    pending_.push_front(part(true));
    pending_.push_front(part(false));
  }
}

void BrelSolver::search() {
  if (options_.first_solution) store(algebra_.greedy_solution(needed_.relation));
  pending_.push_back({needed_.relation, 0, {}});
  std::uint32_t depth = 0;
  while (!pending_.empty() && !limit_is_reached()) {
    BrelNode node = std::move(pending_.front());
    pending_.pop_front();
    if (options_.breadth_first && node.depth != std::exchange(depth, node.depth))
      trace_.tell_next_depth();
    explore(std::move(node));
  }
  pending_.clear();
}

// The search gives each output the first irredundant sum, which need not be the shortest function.
void BrelSolver::polish() {
  auto& stored = result_.solutions;
  for (bool is_better = !stored.empty(); is_better;) {
    const double before = stored.front().cost;
    std::vector<BrelSolution> best(
        stored.begin(),
        stored.begin() + std::min<std::ptrdiff_t>(std::ssize(stored), options_.polished_solutions));
    for (const BrelSolution& solution : best) {
      std::vector<Bdd> functions = needed_functions(solution);
      for (std::size_t i = 0; i < functions.size(); ++i) {
        const Bdd present = functions[i];
        for (Bdd& other : algebra_.alternatives(needed_.relation, functions, i)) {
          functions[i] = std::move(other);
          store(functions);
        }
        functions[i] = present;
      }
    }
    is_better = callbacks_.compare(stored.front().cost, before);
  }
}

// Replays the best solution in a way that the search does not use.
void BrelSolver::check_best() const {
  if (result_.solutions.empty()) return;
  const std::vector<Bdd> functions = needed_functions(result_.solutions.front());
  std::vector<Bdd> substitution;
  for (std::size_t i = 0; i < needed_.outputs.size(); ++i) {
    const std::uint32_t variable = needed_.outputs[i].variable();
    while (substitution.size() <= variable)
      substitution.push_back(bdd::bdd_variable(static_cast<std::uint32_t>(substitution.size())));
    substitution[variable] = functions[i];
  }
  if (compose(needed_.relation, substitution).is_true()) return;
  trace_.tell_incorrect(needed_.relation, needed_.outputs, functions);
  assert(false && "the search keeps solutions only");
}

BrelResult BrelSolver::solve() && {
  if (!algebra_.is_total(needed_.relation)) return {};
  if (needed_.outputs.size() < 2)
    store(algebra_.greedy_solution(needed_.relation));
  else
    search();
  polish();
  check_best();
  trace_.tell_totals(options_, result_, base::ticks_now() - start_);
  return std::move(result_);
}

BrelResult brel_solve(const Bdd& relation, std::vector<Bdd> inputs, std::vector<Bdd> outputs,
                      const BrelOptions& options, BrelCallbacks callbacks) {
  const BrelRelation whole{relation, std::move(inputs), std::move(outputs)};
  return BrelSolver(whole, options, std::move(callbacks)).solve();
}

}  // namespace vorel::decomposition
