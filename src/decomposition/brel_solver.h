// decomposition/brel_solver.h - functions inside a Boolean relation, of least cost as far as a
// bounded search finds.
// Here:      options, callbacks, the result.
// Not here:  the search itself (decomposition/brel_search.h), where relations come from
//            (decomposition/boolean_decomposer.h).
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "decomposition/brel_relation.h"

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
  // Relations of at most so many inputs and outputs are searched as tables, others as diagrams:
  // with the same result.
  std::uint32_t most_table_variables = 14;
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

class BrelSolver {
 public:
  // Outputs that the relation does not depend on are 0 in all functions.
  BrelSolver(BrelRelation relation, const BrelOptions& options, BrelCallbacks callbacks);

  BrelResult solve() &&;

 private:
  BrelRelation relation_;
  BrelOptions options_;
  BrelCallbacks callbacks_;
};

BrelResult brel_solve(const bdd::Bdd& relation, std::vector<bdd::Bdd> inputs,
                      std::vector<bdd::Bdd> outputs, const BrelOptions& options,
                      BrelCallbacks callbacks);

}  // namespace vorel::decomposition
