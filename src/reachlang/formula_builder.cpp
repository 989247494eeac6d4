// Equal parts become one node by a table from operator and operands to the node that has them
// [Ershov-1958]; since operands are such nodes themselves, comparing their numbers is enough.
// Constants are folded before the table is asked. Operands are not put in order, so that a & b and
// b & a stay two nodes; their gates are shared below, where clauses are made.
#include "reachlang/formula_builder.h"

#include <algorithm>
#include <cassert>

#include "base/hashing.h"

namespace vorel::reachlang {

FormulaBuilder::FormulaBuilder() {
  expr_.add_constant(ReachValue(false), a_bool);
  expr_.add_constant(ReachValue(true), a_bool);
}

ReachNodeId FormulaBuilder::atom(ReachOp op, const ReachNodeRef& node) {
  const std::uint64_t key = static_cast<std::uint64_t>(op) << 40 |
                            static_cast<std::uint64_t>(node.kind) << 32 | node.index;
  const auto [found, is_new] = atoms_.try_emplace(key, 0);
  if (is_new) {
    const ReachNodeId operand = expr_.add_constant(ReachValue(node), {node.kind, 0});
    found->second = expr_.add({.op = op, .is_dynamic = true, .type = a_bool, .detail = 1},
                              std::span(&operand, 1));
  }
  return found->second;
}

ReachNodeId FormulaBuilder::negation(ReachNodeId operand) {
  if (is_constant(operand)) return constant(is_false(operand));
  const ReachNode& node = expr_.node(operand);
  if (node.op == ReachOp::not_) return expr_.operands(node).front();
  return shared(ReachOp::not_, std::span(&operand, 1));
}

ReachNodeId FormulaBuilder::parity(std::vector<ReachNodeId> operands) {
  const auto trues = std::ranges::count_if(operands, [this](auto node) { return is_true(node); });
  std::erase_if(operands, [this](ReachNodeId node) { return is_constant(node); });
  ReachNodeId result = false_node;
  if (operands.size() == 1) result = operands.front();
  if (operands.size() > 1) result = shared(ReachOp::xor_, operands);
  return trues % 2 == 0 ? result : negation(result);
}

ReachNodeId FormulaBuilder::choice(ReachNodeId chooser, ReachNodeId then, ReachNodeId otherwise) {
  if (is_constant(chooser)) return is_true(chooser) ? then : otherwise;
  if (then == otherwise) return then;
  const ReachNodeId operands[] = {chooser, then, otherwise};
  return shared(ReachOp::choice, operands);
}

ReachNodeId FormulaBuilder::at_least(std::int64_t least, std::vector<ReachNodeId> operands) {
  const auto trues = std::ranges::count_if(operands, [this](auto node) { return is_true(node); });
  std::erase_if(operands, [this](ReachNodeId node) { return is_constant(node); });
  if (least <= trues) return true_node;
  // No overflow: `least` is positive here.
  if (least - trues > static_cast<std::int64_t>(operands.size())) return false_node;
  if (operands.size() == 1) return operands.front();
  operands.insert(operands.begin(), number(least - trues));
  return shared(ReachOp::threshold_list, operands);
}

bool FormulaBuilder::Junction::add(ReachNodeId operand) {
  const bool decisive = op_ == ReachOp::or_;
  if (builder_.is_constant(operand)) {
    is_decided_ = is_decided_ || builder_.is_true(operand) == decisive;
    return !is_decided_;
  }
  auto& seen = builder_.seen_;
  if (seen.size() <= operand) seen.resize(std::max<std::size_t>(operand + 1, seen.size() * 2));
  // A junction inside this one may have taken over the mark; then a repetition stays, for the gate
  // to remove.
  if (std::exchange(seen[operand], stamp_) != stamp_) operands_.push_back(operand);
  return true;
}

ReachNodeId FormulaBuilder::Junction::result() {
  if (is_decided_) return builder_.constant(op_ == ReachOp::or_);
  if (operands_.empty()) return builder_.constant(op_ == ReachOp::and_);
  if (operands_.size() == 1) return operands_.front();
  return builder_.shared(op_, operands_);
}

ReachNodeId FormulaBuilder::shared(ReachOp op, std::span<const ReachNodeId> operands) {
  std::uint64_t hash = static_cast<std::uint64_t>(op);
  for (const ReachNodeId operand : operands) hash = base::combine_hash(hash, operand);
  const auto [first, last] = nodes_.equal_range(hash);
  for (auto entry = first; entry != last; ++entry) {
    const ReachNode& node = expr_.node(entry->second);
    if (node.op == op && std::ranges::equal(expr_.operands(node), operands)) return entry->second;
  }
  const ReachNodeId id = expr_.add({.op = op, .is_dynamic = true, .type = a_bool}, operands);
  nodes_.emplace(hash, id);
  return id;
}

ReachNodeId FormulaBuilder::number(std::int64_t value) {
  const auto [found, is_new] = numbers_.try_emplace(value, 0);
  if (is_new) found->second = expr_.add_constant(ReachValue(value), {BaseType::numerical, 0});
  return found->second;
}

}  // namespace vorel::reachlang
