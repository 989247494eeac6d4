#include "reachlang/reach_expr.h"

#include <algorithm>

namespace vorel::reachlang {

ReachNodeId ReachExpr::add(ReachNode node, std::span<const ReachNodeId> operands) {
  const auto id = static_cast<ReachNodeId>(nodes_.size());
  std::uint32_t depth = 0;
  for (const ReachNodeId operand : operands) {
    assert(operand < id && "operands come before what uses them");
    depth = std::max(depth, depths_[operand] + 1);
  }
  node.first_operand = static_cast<std::uint32_t>(operands_.size());
  node.operand_count = static_cast<std::uint32_t>(operands.size());
  operands_.insert(operands_.end(), operands.begin(), operands.end());
  nodes_.push_back(node);
  depths_.push_back(depth);
  return id;
}

ReachNodeId ReachExpr::add_constant(ReachValue value, ReachType type) {
  const auto position = static_cast<std::uint32_t>(values_.size());
  values_.push_back(std::move(value));
  return add({.op = ReachOp::constant, .type = type, .detail = position}, {});
}

std::uint32_t ReachExpr::add_name(std::string_view name) {
  names_.emplace_back(name);
  return static_cast<std::uint32_t>(names_.size() - 1);
}

}  // namespace vorel::reachlang
