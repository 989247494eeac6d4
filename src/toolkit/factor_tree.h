// toolkit/factor_tree.h - the expressions that factoring tries out, with shared parts.
// Here:      nodes in a pool, their literal counts, turning one into a LogicExpr.
// Not here:  which to make (toolkit/factor.h).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "toolkit/logic_expr.h"
#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

class FactorTree {
 public:
  using Node = std::uint32_t;  // a position in the pool

  Node constant(bool value);
  Node cube(ConstRow row);
  // Operands of the same kind are taken in; a single operand is the result itself.
  Node product(std::span<const Node> operands) { return combine(Kind::product, operands); }
  Node sum(std::span<const Node> operands) { return combine(Kind::sum, operands); }

  std::size_t literals(Node node) const { return nodes_[node].literals; }
  LogicExpr expression(Node node, std::span<const std::string> names, bool inverted) const;

 private:
  enum class Kind : std::uint8_t { zero, one, positive, negative, product, sum };
  struct NodeData {
    Kind kind;
    std::size_t position = 0;  // of a literal
    std::size_t literals = 0;
    std::vector<Node> operands = {};
  };

  Node add(NodeData data);
  Node combine(Kind kind, std::span<const Node> operands);

  std::vector<NodeData> nodes_;
};

}  // namespace vorel::toolkit
