// decomposition/brel_solver.h - functions inside a Boolean relation, of least cost as far as a
// bounded search finds.
// Here:      options, callbacks, the two orders of the search, its result.
// Not here:  the questions that it asks of relations (decomposition/brel_relation.h), where
// relations
//            come from (decomposition/boolean_decomposer.h), what is told of the search
//            (decomposition/brel_trace.h).
//
// The search of [BCK-2009]: where the minimum of each output for itself leaves the relation, at
// some point an output that may take both values there is given the one or the other, which splits
// the relation into two smaller ones.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/hashing.h"
#include "decomposition/brel_relation.h"
#include "decomposition/brel_trace.h"

namespace vorel::decomposition {

struct BrelOptions {
  bool trace = false;          // tell each step of the search
  bool verbose = false;        // tell options and totals
  bool breadth_first = true;   // by depth; otherwise each relation's parts before its neighbours
  bool first_solution = true;  // the greedy solution of the whole relation comes before the search
  // Breadth first, each relation that is split gives its greedy solution.
  bool store_all = true;
  bool use_cache = false;              // a relation that comes again is not explored again
  std::uint32_t max_explored = 32;     // relations
  std::uint32_t stored_solutions = 5;  // in the result; 0 counts as 1
  // So many of the best solutions are changed in single outputs at the end, as long as that helps.
  std::uint32_t polished_solutions = 5;
  double cpu_limit_ms = -1.0;  // none if negative
};

// Each is given one function per output of the relation, in their order.
struct BrelCallbacks {
  // Cheap, since it is asked for each explored relation, about functions that need not be inside
  // it. On the scale of solution_found, as relations that cost more than the best solution are
  // skipped.
  std::function<double(const std::vector<bdd::Bdd>&)> cost;
  // Called once for each distinct solution; its cost.
  std::function<double(const std::vector<bdd::Bdd>&)> solution_found;
  // True if the first cost is better than the second.
  std::function<bool(double, double)> compare = std::less<>();
};

struct BrelSolution {
  std::vector<bdd::Bdd> functions;  // one per output, inside the relation
  double cost = 0;                  // as solution_found says
};

struct BrelResult {
  // Distinct; the best first, equally good ones as they were found. Empty if the relation is not
  // total, or if no limit left room for a solution and first_solution is off.
  std::vector<BrelSolution> solutions;
  double explored = 0;          // relations
  std::uint64_t cached = 0;     // relations that were passed over: too costly, or known
  std::uint32_t max_depth = 0;  // of an explored relation; that of the whole one is 0
  std::uint64_t found = 0;      // distinct solutions, stored or not
};

struct BrelNode {
  bdd::Bdd relation;
  std::uint32_t depth = 0;
  std::string label;  // the choices that lead to it, if the search is traced
};

class BrelSolver {
 public:
  // Outputs that the relation does not depend on are 0 in all functions.
  BrelSolver(const BrelRelation& relation, const BrelOptions& options, BrelCallbacks callbacks);

  BrelResult solve() &&;

 private:
  void search();
  void explore(BrelNode node);
  bool is_passed_over(const BrelNode& node, double cost);
  void split(BrelNode node, const bdd::Bdd& conflict);
  void polish();
  void store(const std::vector<bdd::Bdd>& functions);
  bool limit_is_reached() const;
  void check_best() const;
  // With the outputs that the relation does not depend on.
  std::vector<bdd::Bdd> completed(const std::vector<bdd::Bdd>& functions) const;
  // Without them.
  std::vector<bdd::Bdd> needed_functions(const BrelSolution& solution) const;

  BrelOptions options_;
  BrelCallbacks callbacks_;
  BrelRelation needed_;                     // without the variables that the relation does not need
  std::vector<std::size_t> output_number_;  // [position in needed_.outputs]: that in the original
  std::size_t output_count_;                // of the original
  BrelAlgebra algebra_;
  BrelTrace trace_;
  std::uint64_t start_;           // in ticks
  std::deque<BrelNode> pending_;  // relations to explore
  std::unordered_set<bdd::Bdd> known_relations_;
  std::unordered_set<std::vector<bdd::Bdd>, base::SequenceHash> known_solutions_;
  BrelResult result_;
};

BrelResult brel_solve(const bdd::Bdd& relation, std::vector<bdd::Bdd> inputs,
                      std::vector<bdd::Bdd> outputs, const BrelOptions& options,
                      BrelCallbacks callbacks);

}  // namespace vorel::decomposition
