// sat/totalizer.h - how many literals of a set are true, in unary.
// Here:      as many thresholds as are asked for, one after the other [MJML-2014].
// Not here:  counts as binary numbers (sat/integer_circuit.h).
#pragma once

#include <span>
#include <vector>

#include "sat/cnf_formula.h"

namespace vorel::sat {

// A balanced tree [BB-2003], of which each node counts the literals below it.
class Totalizer {
 public:
  // Adds nothing yet.
  explicit Totalizer(std::span<const Lit> lits);

  std::size_t size() const { return nodes_.back().size; }
  // A literal that is true when at least so many are, from 1 to size(); clauses say only that.
  Lit at_least(std::size_t count, CnfFormula& formula, ClauseGroup group);

 private:
  struct Node {
    std::uint32_t left, right;  // none of a leaf; below the node
    std::uint32_t size;
    Lits outputs;  // as many as were needed so far; the literal of a leaf
  };

  std::uint32_t build(std::span<const Lit> lits);
  void extend(std::uint32_t index, std::size_t count, CnfFormula& formula, ClauseGroup group);

  std::vector<Node> nodes_;  // the root last
};

}  // namespace vorel::sat
