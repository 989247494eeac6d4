// decomposition/brel_search.h - the search for functions inside a Boolean relation.
// Here:      the two orders of the search, what is kept of it.
// Not here:  the questions that it asks of relations (decomposition/brel_relation.h,
//            decomposition/brel_tables.h), options and results (decomposition/brel_solver.h), what
//            is told of the search (decomposition/brel_trace.h).
//
// The search of [BCK-2009]: where the minimum of each output for itself leaves the relation, at
// some point an output that may take both values there is given the one or the other, which splits
// the relation into two smaller ones.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "decomposition/brel_relation.h"
#include "decomposition/brel_solver.h"
#include "decomposition/brel_tables.h"
#include "decomposition/brel_trace.h"

namespace vorel::decomposition {

template <class Relation>
struct BrelNode {
  Relation relation;
  std::uint32_t depth = 0;
  std::string label;  // the choices that lead to it, if the search is traced
};

// Algebra is BrelTables or BrelAlgebra.
template <class Algebra>
class BrelSearch {
 public:
  // Outputs that the relation does not depend on are 0 in all functions; `needed` is the relation
  // without them and without such inputs.
  BrelSearch(const BrelRelation& relation, BrelRelation needed, const BrelOptions& options,
             const BrelCallbacks& callbacks);

  BrelResult run() &&;

 private:
  using Functions = std::vector<typename Algebra::Function>;  // one per needed output
  using Node = BrelNode<typename Algebra::Relation>;
  struct Solution {
    Functions functions;
    double cost;
  };

  void search();
  void explore(const Node& node);
  bool is_passed_over(const Node& node, double cost);
  void split(const Node& node, const typename Algebra::Conflict& conflict);
  void polish();
  void store(const Functions& functions);
  bool limit_is_reached() const;
  void check_best();
  // With the outputs that the relation does not depend on. Valid until it is asked again.
  const std::vector<bdd::Bdd>& completed(const Functions& functions);

  const BrelOptions& options_;
  const BrelCallbacks& callbacks_;
  BrelRelation needed_;
  std::vector<std::size_t> output_number_;  // [position in needed_.outputs]: that in the original
  std::vector<bdd::Bdd> completed_;
  Algebra algebra_;
  BrelTrace trace_;
  std::uint64_t start_;       // in ticks
  std::deque<Node> pending_;  // relations to explore
  Functions minimum_, greedy_;
  std::unordered_set<typename Algebra::Relation, typename Algebra::RelationHash> known_relations_;
  std::unordered_set<Functions, typename Algebra::FunctionsHash> known_solutions_;
  std::vector<Solution> stored_;  // as BrelResult has them
  BrelResult result_;
};

extern template class BrelSearch<BrelTables>;
extern template class BrelSearch<BrelAlgebra>;

}  // namespace vorel::decomposition
