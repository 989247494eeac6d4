// reachlang/type_rules.h - which operands an operator takes, and what it yields.
// Here:      the rules of every operator, with the messages of their violation.
// Not here:  scopes and positions (reachlang/parser.h).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "reachlang/reach_expr.h"

namespace vorel::reachlang {

struct TypedOperand {
  ReachType type;
  bool is_dynamic = false;
};

// What a rule says of an operator applied to operands.
struct TypeVerdict {
  static constexpr std::size_t the_operator = ~std::size_t{0};

  std::string message;                 // empty: the operands are right
  std::size_t culprit = the_operator;  // the operand that the message is about
  TypedOperand result;

  bool is_right() const { return message.empty(); }
};

// For all operators but the leaves and those that bind variables; one of a run is asked about by
// itself, with what stands to its left and right. `repeats`: of $, @ and '.
TypeVerdict check_operands(ReachOp op, std::span<const TypedOperand> operands,
                           std::uint32_t repeats = 1);

// The type that an operator with one operand yields, of an operand that it takes.
ReachType result_type(ReachOp op, ReachType operand);

// Of the parts of a binding operator: empty if the part is right.
std::string check_domain(const TypedOperand& domain, std::string_view variable);
std::string check_condition(const TypedOperand& condition);
std::string check_threshold(const TypedOperand& threshold);
std::string check_body(ReachOp op, const TypedOperand& body);
std::string check_property(const TypedOperand& root);

// The type of a binding operator over a body that is right.
TypedOperand type_of_binding(ReachOp op, const TypedOperand& body);

}  // namespace vorel::reachlang
