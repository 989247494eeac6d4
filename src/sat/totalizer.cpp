#include "sat/totalizer.h"

#include <algorithm>
#include <cassert>

namespace vorel::sat {

Totalizer::Totalizer(std::span<const Lit> lits, Polarity polarity) : polarity_{polarity} {
  assert(!lits.empty());
  nodes_.reserve(2 * lits.size());
  build(lits);
}

std::uint32_t Totalizer::build(std::span<const Lit> lits) {
  Node node{.left = 0, .right = 0, .size = static_cast<std::uint32_t>(lits.size()), .outputs = {}};
  if (lits.size() == 1) {
    node.outputs.push_back(lits[0]);
  } else {
    node.left = build(lits.first(lits.size() / 2));
    node.right = build(lits.subspan(lits.size() / 2));
  }
  nodes_.push_back(std::move(node));
  return static_cast<std::uint32_t>(nodes_.size() - 1);
}

// Where i of the left are true and the rest of the sum of the right, the output is. Where fewer
// than i of the left are true, and of the right fewer than are then missing, it is not.
void Totalizer::define(const Node& node, std::size_t sum, Lit output, CnfFormula& formula,
                       ClauseGroup group) const {
  const Lits &left = nodes_[node.left].outputs, &right = nodes_[node.right].outputs;
  Lits clause;
  const std::size_t least = sum > right.size() ? sum - right.size() : 0;
  for (std::size_t i = least; polarity_ <= 0 && i <= std::min(sum, left.size()); ++i) {
    clause.assign({output});
    if (i > 0) clause.push_back(~left[i - 1]);
    if (i < sum) clause.push_back(~right[sum - i - 1]);
    formula.add_clause(clause, group);
  }
  for (std::size_t i = 1; polarity_ >= 0 && i <= sum; ++i) {
    clause.assign({~output});
    if (i <= left.size()) clause.push_back(left[i - 1]);
    if (sum + 1 - i <= right.size()) clause.push_back(right[sum - i]);
    formula.add_clause(clause, group);
  }
}

void Totalizer::extend(std::uint32_t index, std::size_t count, CnfFormula& formula,
                       ClauseGroup group) {
  Node& node = nodes_[index];
  count = std::min<std::size_t>(count, node.size);
  if (node.outputs.size() >= count) return;
  extend(node.left, count, formula, group);
  extend(node.right, count, formula, group);
  for (std::size_t sum = node.outputs.size() + 1; sum <= count; ++sum) {
    const Lit output(formula.new_var(true), false);
    define(node, sum, output, formula, group);
    if (sum > 1) formula.add_binary(~output, node.outputs.back(), group);
    node.outputs.push_back(output);
  }
}

Lit Totalizer::at_least(std::size_t count, CnfFormula& formula, ClauseGroup group) {
  assert(count >= 1 && count <= size());
  extend(static_cast<std::uint32_t>(nodes_.size() - 1), count, formula, group);
  return nodes_.back().outputs[count - 1];
}

}  // namespace vorel::sat
