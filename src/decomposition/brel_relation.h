// decomposition/brel_relation.h - a Boolean relation: which outputs each input allows.
// Here:      the relation, and the questions that a search for functions inside it asks.
// Not here:  the search (decomposition/brel_solver.h).
#pragma once

#include <cstddef>
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

// The questions about relations that share inputs and outputs. A vector of functions has one over
// the inputs for each output, in their order.
class BrelAlgebra {
 public:
  BrelAlgebra(std::span<const bdd::Bdd> inputs, std::span<const bdd::Bdd> outputs);

  std::size_t variable_count() const { return inputs_.size() + outputs_.size(); }
  bool is_total(const bdd::Bdd& relation) const;

  // A function for one output that takes no value which the relation forbids whatever the others do
  // there: an irredundant sum. Where both values are forbidden it is 0.
  bdd::Bdd output_function(const bdd::Bdd& relation, std::size_t output) const;

  // Each output for itself. Together the functions may leave the relation.
  std::vector<bdd::Bdd> incompatible_minimum(const bdd::Bdd& relation) const;

  // One output after another, each with those before it settled: functions inside the relation, if
  // it is total.
  std::vector<bdd::Bdd> greedy_solution(bdd::Bdd relation) const;

  // Other functions for one output of a solution, while all others stay: the first literal that
  // will do, if one does, an irredundant sum, and an irredundant product of sums.
  std::vector<bdd::Bdd> alternatives(const bdd::Bdd& relation, std::span<const bdd::Bdd> solution,
                                     std::size_t output) const;

  // The inputs at which the functions leave the relation.
  bdd::Bdd conflict(const bdd::Bdd& relation, std::span<const bdd::Bdd> functions) const;

  // The product of all inputs, plain or negated, that is the first point of a set that has one: the
  // first input is the most significant digit.
  bdd::Bdd lowest_point(bdd::Bdd set) const;

  // The first output that may take both values at a point, where the minimum of each output for
  // itself leaves the total relation.
  std::size_t free_output(const bdd::Bdd& relation, const bdd::Bdd& point) const;

 private:
  // Where an output has to be 1, and where it has to be 0, whatever the others do.
  struct Forced {
    bdd::Bdd to_1, to_0;
  };
  Forced forced(const bdd::Bdd& relation, std::size_t output) const;
  bdd::Bdd substitute(const bdd::Bdd& relation, std::size_t output, const bdd::Bdd& function) const;

  std::vector<bdd::Bdd> inputs_, outputs_;
  std::vector<bdd::Bdd> others_;  // [output]: the product of all other outputs
  bdd::Bdd all_outputs_;          // the product of all
};

}  // namespace vorel::decomposition
