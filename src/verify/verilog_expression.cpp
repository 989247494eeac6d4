#include "verify/verilog_expression.h"

#include <algorithm>
#include <cassert>
#include <span>

namespace vorel::verify {
namespace {

struct OperatorRow {
  std::string_view sign;
  VerilogOp op;
  bool is_negated;
  bool is_logical;  // it asks whether operands are 0, whatever their width
};
constexpr OperatorRow logical_or[] = {{"||", VerilogOp::disjunction, false, true}};
constexpr OperatorRow logical_and[] = {{"&&", VerilogOp::conjunction, false, true}};
constexpr OperatorRow bitwise_or[] = {{"|", VerilogOp::disjunction, false, false}};
constexpr OperatorRow bitwise_xor[] = {{"^", VerilogOp::exclusive_or, false, false},
                                       {"~^", VerilogOp::exclusive_or, true, false},
                                       {"^~", VerilogOp::exclusive_or, true, false}};
constexpr OperatorRow bitwise_and[] = {{"&", VerilogOp::conjunction, false, false}};
// What binds weaker comes first.
constexpr std::span<const OperatorRow> levels[] = {logical_or, logical_and, bitwise_or, bitwise_xor,
                                                   bitwise_and};

class ExpressionParser {
 public:
  ExpressionParser(VerilogCursor& cursor, VerilogWires& wires, VerilogExpression& result)
      : cursor_{cursor}, wires_{wires}, result_{result} {}

  // What is known of an expression besides its steps.
  struct Operand {
    bool is_wide = false;   // a number without a size has a part in it
    bool is_plain = false;  // such a number alone, whose bits above the lowest are 0
  };

  // expression = disjunction { "?" expression ":" disjunction } .
  bool expression(Operand& operand) {
    if (!level(0, operand)) return false;
    std::size_t choices = 0;
    bool is_wide = false;  // one of those that are chosen from, the last one left out
    for (; cursor_.at_sign("?"); ++choices) {
      if (!check_logical(operand)) return false;
      cursor_.skip();
      Operand chosen;
      if (!nested(chosen) || !cursor_.expect(":") || !level(0, operand)) return false;
      is_wide = is_wide || chosen.is_wide;
    }
    result_.insert(result_.end(), choices, {VerilogOp::choice});
    if (choices > 0) operand = {is_wide || operand.is_wide, false};
    return true;
  }

  bool operand(Operand& operand) {
    if (cursor_.token().kind == TokenKind::number) return constant(operand);
    const Spot spot = cursor_.token().spot;
    std::string name;
    if (!cursor_.take_name(name, "a wire or a constant")) return false;
    if (cursor_.at_sign("["))
      return cursor_.fail_at(cursor_.token().spot,
                             "parts of vectors are not supported: each bit must be a wire, with an "
                             "escaped name such as '\\req[0] '");
    result_.push_back({VerilogOp::wire, wires_.mention(name, spot)});
    operand = {};
    return true;
  }

 private:
  bool nested(Operand& operand) {
    if (++depth_ > most_nested_expressions) {
      return cursor_.fail_expected("no more than " + std::to_string(most_nested_expressions) +
                                   " nested expressions");
    }
    if (!expression(operand)) return false;
    --depth_;
    return true;
  }

  bool level(std::size_t number, Operand& left) {
    if (number == std::size(levels)) return factor(left);
    if (!level(number + 1, left)) return false;
    while (const OperatorRow* const row = operator_here(levels[number])) {
      if (row->is_logical && !check_logical(left)) return false;
      cursor_.skip();
      Operand right;
      if (!level(number + 1, right)) return false;
      if (row->is_logical && !check_logical(right)) return false;
      result_.push_back({row->op});
      if (row->is_negated) result_.push_back({VerilogOp::negation});
      left = {!row->is_logical && (left.is_wide || right.is_wide), false};
    }
    return true;
  }

  const OperatorRow* operator_here(std::span<const OperatorRow> rows) const {
    if (cursor_.token().kind != TokenKind::sign) return nullptr;
    const auto row = std::ranges::find(rows, cursor_.token().text, &OperatorRow::sign);
    return row == rows.end() ? nullptr : &*row;
  }

  // factor = { "~" | "!" } ( name | constant | "(" expression ")" ) .
  bool factor(Operand& result) {
    std::vector<bool> is_logical;  // by negation, the outermost first
    while (cursor_.at_sign("~") || cursor_.at_sign("!")) {
      is_logical.push_back(cursor_.at_sign("!"));
      cursor_.skip();
    }
    const bool is_bracket = cursor_.accept("(");
    if (is_bracket ? !(nested(result) && cursor_.expect(")")) : !operand(result)) return false;
    for (; !is_logical.empty(); is_logical.pop_back()) {
      if (is_logical.back() && !check_logical(result)) return false;
      result_.push_back({VerilogOp::negation});
      result = {result.is_wide && !is_logical.back(), false};
    }
    return true;
  }

  bool check_logical(const Operand& operand) const {
    if (!operand.is_wide || operand.is_plain) return true;
    return cursor_.fail_at(cursor_.last_token().spot,
                           "a number without a size makes this expression wider than one bit: "
                           "constants are written 1'b0 and 1'b1");
  }

  bool constant(Operand& operand) {
    const std::string_view text = cursor_.token().text;
    const bool is_verilog = text.starts_with("1'") && text.size() == 4 &&
                            std::string_view("bBdDhHoO").find(text[2]) != std::string_view::npos;
    const bool has_size = is_verilog || text == "1b`0" || text == "1b`1";
    if ((!has_size && text.size() != 1) || (text.back() != '0' && text.back() != '1'))
      return cursor_.fail_expected("a constant, 1'b0 or 1'b1");
    result_.push_back({text.back() == '1' ? VerilogOp::constant_1 : VerilogOp::constant_0});
    operand = {!has_size, !has_size};
    cursor_.skip();
    return true;
  }

  VerilogCursor& cursor_;
  VerilogWires& wires_;
  VerilogExpression& result_;
  std::uint32_t depth_ = 0;
};

}  // namespace

bool parse_expression(VerilogCursor& cursor, VerilogWires& wires, VerilogExpression& result) {
  assert(result.empty());
  ExpressionParser::Operand operand;
  return ExpressionParser(cursor, wires, result).expression(operand);
}

bool parse_operand(VerilogCursor& cursor, VerilogWires& wires, VerilogExpression& result) {
  assert(result.empty());
  ExpressionParser::Operand operand;
  return ExpressionParser(cursor, wires, result).operand(operand);
}

}  // namespace vorel::verify
