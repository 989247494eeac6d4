// tests/support/logic_values.h - expressions by definition.
#pragma once

#include <algorithm>
#include <variant>

#include "toolkit/logic_expr.h"

namespace vorel::support {

// `value_of_name` tells the values of the names in it.
template <class ValueOfName>
bool value_of(const toolkit::LogicExpr& expression, const ValueOfName& value_of_name) {
  using Expr = toolkit::LogicExpr;
  const auto holds = [&](const Expr& operand) { return value_of(operand, value_of_name); };
  if (const auto* node = std::get_if<Expr::And>(&expression.node))
    return std::ranges::all_of(node->operands, holds);
  if (const auto* node = std::get_if<Expr::Or>(&expression.node))
    return std::ranges::any_of(node->operands, holds);
  if (const auto* node = std::get_if<Expr::Const>(&expression.node)) return node->value;
  const auto& literal = std::get<Expr::Literal>(expression.node);
  return value_of_name(literal.name) != literal.negated;
}

}  // namespace vorel::support
