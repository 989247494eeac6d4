#include "sat/totalizer.h"

#include <algorithm>
#include <cassert>

namespace vorel::sat {

Totalizer::Totalizer(std::span<const Lit> lits) {
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

void Totalizer::extend(std::uint32_t index, std::size_t count, CnfFormula& formula,
                       ClauseGroup group) {
  Node& node = nodes_[index];
  count = std::min<std::size_t>(count, node.size);
  if (node.outputs.size() >= count) return;
  extend(node.left, count, formula, group);
  extend(node.right, count, formula, group);
  const Lits &left = nodes_[node.left].outputs, &right = nodes_[node.right].outputs;
  for (std::size_t sum = node.outputs.size() + 1; sum <= count; ++sum) {
    const Lit output(formula.new_var(true), false);
    const std::size_t least = sum > right.size() ? sum - right.size() : 0;
    for (std::size_t i = least; i <= std::min(sum, left.size()); ++i) {
      Lits clause{output};
      if (i > 0) clause.push_back(~left[i - 1]);
      if (i < sum) clause.push_back(~right[sum - i - 1]);
      formula.add_clause(clause, group);
    }
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
