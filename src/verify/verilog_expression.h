// verify/verilog_expression.h - the right side of an assignment.
//
//   expression  = disjunction { "?" expression ":" disjunction } .
//   the levels, each of operands of the next: "||", "&&", "|", "^" and "~^", "&"
//   factor      = { "~" | "!" } ( name | constant | "(" expression ")" ) .
//
// Constants are 0 and 1, alone or as numbers of one bit: 1'b0, or 1b`0 as equations have them. As
// in Verilog a number without a size is wide: what is true of "!(~1)" is not what holds of one bit,
// so where it matters there is an error. Brackets and choices nest at most most_nested_expressions
// deep.
#pragma once

#include "verify/verilog_scanner.h"

namespace vorel::verify {

inline constexpr std::uint32_t most_nested_expressions = 500;

// Appends to `result`, which is empty. False after an error.
bool parse_expression(VerilogCursor& cursor, VerilogWires& wires, VerilogExpression& result);

// A name or a constant, and nothing more.
bool parse_operand(VerilogCursor& cursor, VerilogWires& wires, VerilogExpression& result);

}  // namespace vorel::verify
