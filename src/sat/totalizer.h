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
  // Adds nothing yet. The polarity is that of the literals that at_least() gives.
  explicit Totalizer(std::span<const Lit> lits, Polarity polarity = -1);

  std::size_t size() const { return nodes_.back().size; }
  // A literal that is true when at least so many are, from 1 to size(). About as many clauses for
  // each literal of the set as the largest count.
  Lit at_least(std::size_t count, CnfFormula& formula, ClauseGroup group);

 private:
  struct Node {
    std::uint32_t left, right;  // none of a leaf; below the node
    std::uint32_t size;
    Lits outputs;  // as many as were needed so far; the literal of a leaf
  };

  std::uint32_t build(std::span<const Lit> lits);
  void extend(std::uint32_t index, std::size_t count, CnfFormula& formula, ClauseGroup group);

  void define(const Node& node, std::size_t sum, Lit output, CnfFormula& formula,
              ClauseGroup group) const;

  std::vector<Node> nodes_;  // the root last
  Polarity polarity_;
};

}  // namespace vorel::sat
