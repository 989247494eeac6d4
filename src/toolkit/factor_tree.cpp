#include "toolkit/factor_tree.h"

namespace vorel::toolkit {

FactorTree::Node FactorTree::add(NodeData data) {
  nodes_.push_back(std::move(data));
  return static_cast<Node>(nodes_.size() - 1);
}

FactorTree::Node FactorTree::constant(bool value) { return add({value ? Kind::one : Kind::zero}); }

FactorTree::Node FactorTree::cube(ConstRow row) {
  std::vector<Word> positions(row.size());
  for (std::size_t k = 0; k < row.size(); ++k) positions[k] = literal_positions(row[k]);
  std::vector<Node> literals;
  for_each_position(positions, [&](std::size_t position) {
    literals.push_back(
        add({admits(row, position, 2) ? Kind::positive : Kind::negative, position, 1}));
  });
  return literals.empty() ? constant(true) : product(literals);
}

FactorTree::Node FactorTree::combine(Kind kind, std::span<const Node> operands) {
  if (operands.size() == 1) return operands.front();
  NodeData data{kind};
  for (const Node operand : operands) {
    const NodeData& part = nodes_[operand];
    assert(part.kind != Kind::zero && part.kind != Kind::one);
    data.literals += part.literals;
    if (part.kind == kind)
      data.operands.insert(data.operands.end(), part.operands.begin(), part.operands.end());
    else
      data.operands.push_back(operand);
  }
  return add(std::move(data));
}

LogicExpr FactorTree::expression(Node node, std::span<const std::string> names,
                                 bool inverted) const {
  const NodeData& data = nodes_[node];
  switch (data.kind) {
    case Kind::zero:
      return {LogicExpr::Const{inverted}};
    case Kind::one:
      return {LogicExpr::Const{!inverted}};
    case Kind::positive:
    case Kind::negative: {
      const std::string name =
          names.empty() ? "x" + std::to_string(data.position) : names[data.position];
      return {LogicExpr::Literal{name, (data.kind == Kind::negative) != inverted}};
    }
    case Kind::product:
    case Kind::sum:
      break;
  }
  std::vector<LogicExpr> operands;
  operands.reserve(data.operands.size());
  for (const Node operand : data.operands) operands.push_back(expression(operand, names, inverted));
  if ((data.kind == Kind::product) != inverted) return {LogicExpr::And{std::move(operands)}};
  return {LogicExpr::Or{std::move(operands)}};
}

}  // namespace vorel::toolkit
