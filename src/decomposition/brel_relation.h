// decomposition/brel_relation.h - a Boolean relation: which outputs each input allows.
// Here:      the relation, and the questions that a search for functions inside it asks.
// Not here:  the same for small relations (decomposition/brel_tables.h), the search
//            (decomposition/brel_search.h).
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "bdd/bdd.h"

namespace vorel::decomposition {

// All inputs and outputs are distinct variables, and the relation depends on nothing else. It is
// total if it allows something at every input; only then there are functions inside it.
struct BrelRelation {
  bdd::Bdd relation;
  std::vector<bdd::Bdd> inputs, outputs;
};

// The questions about the parts of a relation. A vector of functions has one over the inputs for
// each output, in their order. The same questions as of BrelTables.
class BrelAlgebra {
 public:
  using Function = bdd::Bdd;
  using Relation = bdd::Bdd;
  // A point at which functions leave a relation, and an output that may take both values there.
  struct Conflict {
    bdd::Bdd point;  // the product of all inputs, plain or negated
    std::size_t output;
  };
  struct FunctionsHash {
    std::size_t operator()(const std::vector<bdd::Bdd>& functions) const;
  };
  using RelationHash = bdd::IdentityHash;

  explicit BrelAlgebra(const BrelRelation& relation);

  const Relation& whole() const { return whole_; }
  bool is_total() const;

  // Each output for itself: a function that takes no value which the relation forbids whatever the
  // others do there, of an irredundant sum. Together the functions may leave the relation.
  void find_minimum(const Relation& relation, std::vector<Function>& functions) const;

  // One output after another, each with those before it settled: functions inside the relation, if
  // it is total.
  void find_greedy(Relation relation, std::vector<Function>& functions) const;

  // Other functions for one output of a solution of the whole relation, while all others stay: an
  // irredundant sum, an irredundant product of sums, and the first literal that will do, if one
  // does.
  std::vector<Function> alternatives(std::span<const Function> solution, std::size_t output) const;

  // Where the minimum of each output for itself leaves a total relation: the first such point, of
  // which the first input is the most significant digit, and the first such output.
  std::optional<Conflict> conflict(const Relation& relation,
                                   std::span<const Function> functions) const;

  // The part of a relation in which the output has the value at the point.
  Relation restricted(const Relation& relation, const Conflict& conflict, bool value) const;

  const bdd::Bdd& bdd_of(const Function& function) const { return function; }

 private:
  // Where an output has to be 1, and where it has to be 0, whatever the others do.
  struct Forced {
    bdd::Bdd to_1, to_0;
  };
  Forced forced(const Relation& relation, std::size_t output) const;
  bdd::Bdd output_function(const Relation& relation, std::size_t output) const;
  Relation substitute(const Relation& relation, std::size_t output, const Function& function) const;
  bdd::Bdd lowest_point(bdd::Bdd set) const;
  std::size_t free_output(const Relation& relation, const bdd::Bdd& point) const;

  bdd::Bdd whole_;
  std::vector<bdd::Bdd> inputs_, outputs_;
  std::vector<bdd::Bdd> others_;  // [output]: the product of all other outputs
  bdd::Bdd all_outputs_;          // the product of all
};

}  // namespace vorel::decomposition
