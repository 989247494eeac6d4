#include "decomposition/brel_search.h"

#include <algorithm>
#include <cassert>

#include "base/clock.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd;

// Smaller relations are searched quickly, and cutting branches by an estimate would lose solutions.
constexpr std::size_t most_variables_uncut = 10;

std::vector<std::size_t> positions_in(const std::vector<Bdd>& list, const std::vector<Bdd>& part) {
  std::vector<std::size_t> positions;
  for (std::size_t i = 0, j = 0; i < list.size() && j < part.size(); ++i)
    if (list[i] == part[j]) positions.push_back(i), ++j;
  return positions;
}

}  // namespace

template <class Algebra>
BrelSearch<Algebra>::BrelSearch(const BrelRelation& relation, BrelRelation needed,
                                const BrelOptions& options, const BrelCallbacks& callbacks)
    : options_{options},
      callbacks_{callbacks},
      needed_{std::move(needed)},
      output_number_{positions_in(relation.outputs, needed_.outputs)},
      completed_(relation.outputs.size(), Bdd(false)),
      algebra_{needed_},
      trace_{options, relation},
      start_{base::ticks_now()} {}

template <class Algebra>
const std::vector<Bdd>& BrelSearch<Algebra>::completed(const Functions& functions) {
  for (std::size_t i = 0; i < functions.size(); ++i)
    completed_[output_number_[i]] = algebra_.bdd_of(functions[i]);
  return completed_;
}

template <class Algebra>
void BrelSearch<Algebra>::store(const Functions& functions) {
  if (!known_solutions_.insert(functions).second) return;
  const std::vector<Bdd>& solution = completed(functions);
  const double cost = callbacks_.solution_found(solution);
  trace_.tell_solution(cost, solution);
  ++result_.found;
  const auto place = std::ranges::upper_bound(stored_, cost, callbacks_.compare, &Solution::cost);
  stored_.insert(place, {functions, cost});
  if (stored_.size() > std::max(options_.stored_solutions, 1u)) stored_.pop_back();
}

template <class Algebra>
bool BrelSearch<Algebra>::limit_is_reached() const {
  if (result_.explored >= options_.max_explored) return true;
  if (options_.cpu_limit_ms < 0) return false;
  return base::seconds_of(base::ticks_now() - start_) * 1e3 > options_.cpu_limit_ms;
}

template <class Algebra>
bool BrelSearch<Algebra>::is_passed_over(const Node& node, double cost) {
  if (!stored_.empty() && needed_.inputs.size() + needed_.outputs.size() > most_variables_uncut) {
    const double best = stored_.front().cost;
    // In breadth, what costs as much as the best may still be better when it is found.
    if (options_.breadth_first ? callbacks_.compare(best, cost) : !callbacks_.compare(cost, best))
      return true;
  }
  return options_.use_cache && !known_relations_.insert(node.relation).second;
}

template <class Algebra>
void BrelSearch<Algebra>::explore(const Node& node) {
  algebra_.find_minimum(node.relation, minimum_);
  const std::vector<Bdd>& whole_minimum = completed(minimum_);
  const double cost = callbacks_.cost(whole_minimum);
  trace_.tell_minimum(node.label, cost, whole_minimum);
  if (is_passed_over(node, cost)) {
    ++result_.cached;
    return;
  }
  ++result_.explored;
  result_.max_depth = std::max(result_.max_depth, node.depth);
  const auto conflict = algebra_.conflict(node.relation, minimum_);
  if (!conflict) return store(minimum_);
  if (options_.breadth_first && options_.store_all) {
    algebra_.find_greedy(node.relation, greedy_);
    store(greedy_);
  }
  split(node, *conflict);
}

template <class Algebra>
void BrelSearch<Algebra>::split(const Node& node, const typename Algebra::Conflict& conflict) {
  const auto part = [&](bool value) {
    Node child{algebra_.restricted(node.relation, conflict, value), node.depth + 1, {}};
    if (options_.trace)
      child.label = node.label + "-" + std::to_string(output_number_[conflict.output]) +
                    (value ? "-1" : "-0");
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

template <class Algebra>
void BrelSearch<Algebra>::search() {
  if (options_.first_solution) {
    algebra_.find_greedy(algebra_.whole(), greedy_);
    store(greedy_);
  }
  pending_.push_back({algebra_.whole(), 0, {}});
  std::uint32_t depth = 0;
  while (!pending_.empty() && !limit_is_reached()) {
    const Node node = std::move(pending_.front());
    pending_.pop_front();
    if (options_.breadth_first && node.depth != std::exchange(depth, node.depth))
      trace_.tell_next_depth();
    explore(node);
  }
  pending_.clear();
}

// The search gives each output the first irredundant sum, which need not be the shortest function.
template <class Algebra>
void BrelSearch<Algebra>::polish() {
  for (bool is_better = !stored_.empty(); is_better;) {
    const double before = stored_.front().cost;
    const auto count = std::min<std::ptrdiff_t>(std::ssize(stored_), options_.polished_solutions);
    for (Solution& solution : std::vector<Solution>(stored_.begin(), stored_.begin() + count)) {
      Functions& functions = solution.functions;
      for (std::size_t i = 0; i < functions.size(); ++i) {
        const auto present = functions[i];
        for (const auto& other : algebra_.alternatives(functions, i)) {
          functions[i] = other;
          store(functions);
        }
        functions[i] = present;
      }
    }
    is_better = callbacks_.compare(stored_.front().cost, before);
  }
}

// Replays the best solution in a way that the search does not use.
template <class Algebra>
void BrelSearch<Algebra>::check_best() {
  if (stored_.empty()) return;
  std::vector<Bdd> substitution, functions;
  for (std::size_t i = 0; i < needed_.outputs.size(); ++i) {
    const std::uint32_t variable = needed_.outputs[i].variable();
    while (substitution.size() <= variable)
      substitution.push_back(bdd::bdd_variable(static_cast<std::uint32_t>(substitution.size())));
    functions.push_back(algebra_.bdd_of(stored_.front().functions[i]));
    substitution[variable] = functions.back();
  }
  if (compose(needed_.relation, substitution).is_true()) return;
  trace_.tell_incorrect(needed_.relation, needed_.outputs, functions);
  assert(false && "the search keeps solutions only");
}

template <class Algebra>
BrelResult BrelSearch<Algebra>::run() && {
  if (!algebra_.is_total()) return {};
  if (needed_.outputs.size() < 2) {
    algebra_.find_greedy(algebra_.whole(), greedy_);
    store(greedy_);
  } else {
    search();
  }
  polish();
  check_best();
  trace_.tell_totals(options_, result_, base::ticks_now() - start_);
  for (const auto& [functions, cost] : stored_)
    result_.solutions.push_back({completed(functions), cost});
  return std::move(result_);
}

template class BrelSearch<BrelTables>;
template class BrelSearch<BrelAlgebra>;

}  // namespace vorel::decomposition
