// The source form of expressions: as few brackets as the levels of the operators allow.
#include <algorithm>
#include <cassert>
#include <iterator>

#include "reachlang/reach_expr.h"

namespace vorel::reachlang {
namespace {

struct OperatorRow {
  ReachOp op;
  std::string_view spelling;
  OperatorLevel level;
};

constexpr OperatorRow operator_rows[] = {
    {ReachOp::constant, "", postfix_level},
    {ReachOp::variable, "", postfix_level},
    {ReachOp::fail, "fail", prefix_level},
    {ReachOp::state, "$", prefix_level},
    {ReachOp::enabled, "@", prefix_level},
    {ReachOp::next_state, "'", postfix_level},
    {ReachOp::condition, "C", prefix_level},
    {ReachOp::event, "E", prefix_level},
    {ReachOp::place, "P", prefix_level},
    {ReachOp::transition, "T", prefix_level},
    {ReachOp::signal, "S", prefix_level},
    {ReachOp::places, "PP", prefix_level},
    {ReachOp::transitions, "TT", prefix_level},
    {ReachOp::signals, "SS", prefix_level},
    {ReachOp::number, "#", prefix_level},
    {ReachOp::name, "name", prefix_level},
    {ReachOp::string, "string", prefix_level},
    {ReachOp::length, "len", prefix_level},
    {ReachOp::downclose, "downclose", prefix_level},
    {ReachOp::triggers, "trig", prefix_level},
    {ReachOp::is_init, "is_init", prefix_level},
    {ReachOp::is_cutoff, "is_cutoff", prefix_level},
    {ReachOp::is_input, "is_input", prefix_level},
    {ReachOp::is_output, "is_output", prefix_level},
    {ReachOp::is_internal, "is_internal", prefix_level},
    {ReachOp::is_dummy, "is_dummy", prefix_level},
    {ReachOp::is_local, "is_local", prefix_level},
    {ReachOp::is_plus, "is_plus", prefix_level},
    {ReachOp::is_minus, "is_minus", prefix_level},
    {ReachOp::not_, "~", prefix_level},
    {ReachOp::negative, "-", prefix_level},
    {ReachOp::pre, "pre", prefix_level},
    {ReachOp::post, "post", prefix_level},
    {ReachOp::conditions_of, "cond", prefix_level},
    {ReachOp::events_of, "ev", prefix_level},
    {ReachOp::places_of, "pls", prefix_level},
    {ReachOp::transitions_of, "tran", prefix_level},
    {ReachOp::signals_of, "sig", prefix_level},
    {ReachOp::cardinality, "card", prefix_level},
    {ReachOp::implies, "->", implies_level},
    {ReachOp::iff, "<->", iff_level},
    {ReachOp::and_, "&", and_level},
    {ReachOp::or_, "|", or_level},
    {ReachOp::xor_, "^", xor_level},
    {ReachOp::plus, "+", sum_level},
    {ReachOp::minus, "-", sum_level},
    {ReachOp::times, "*", product_level},
    {ReachOp::divided, "/", product_level},
    {ReachOp::modulo, "%", product_level},
    {ReachOp::without, "\\", sum_level},
    {ReachOp::equal, "=", comparison_level},
    {ReachOp::not_equal, "!=", comparison_level},
    {ReachOp::less, "<", comparison_level},
    {ReachOp::at_most, "<=", comparison_level},
    {ReachOp::greater, ">", comparison_level},
    {ReachOp::at_least, ">=", comparison_level},
    {ReachOp::in, "in", in_level},
    {ReachOp::substring, "", postfix_level},
    {ReachOp::substring_from, "", postfix_level},
    {ReachOp::substring_to, "", postfix_level},
    {ReachOp::choice, "", choice_level},
    {ReachOp::set, "", postfix_level},
    {ReachOp::threshold_list, "threshold", postfix_level},
    {ReachOp::forall, "forall", postfix_level},
    {ReachOp::exists, "exists", postfix_level},
    {ReachOp::xorsum, "xorsum", postfix_level},
    {ReachOp::gather, "gather", postfix_level},
    {ReachOp::threshold, "threshold", postfix_level},
    {ReachOp::let, "let", postfix_level},
};
constexpr bool is_in_order() {
  for (std::size_t i = 0; i < std::size(operator_rows); ++i) {
    if (static_cast<std::size_t>(operator_rows[i].op) != i) return false;
  }
  return std::size(operator_rows) == reach_op_count;
}
static_assert(is_in_order());

const OperatorRow& row_of(ReachOp op) { return operator_rows[static_cast<std::size_t>(op)]; }

bool is_word_character(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

class Printer {
 public:
  explicit Printer(const ReachExpr& expr) : expr_{expr} {}

  std::string run(const ReachNode& node) {
    print(node);
    return std::move(text_);
  }

 private:
  static constexpr std::size_t max_length = 1'000'000;

  void print(const ReachNode& node) {
    if (text_.size() > max_length || depth_ > max_reach_depth) {
      if (!text_.ends_with("...")) text_ += "...";
      return;
    }
    ++depth_;
    print_form(node);
    --depth_;
  }

  void print_form(const ReachNode& node) {
    const OperatorRow& row = row_of(node.op);
    if (node.op == ReachOp::constant) {
      text_ += to_string(expr_.value(node));
    } else if (node.op == ReachOp::variable) {
      text_ += expr_.name(node, 0);
    } else if (node.op == ReachOp::next_state) {
      print_operand(node, 0, postfix_level);
      text_.append(node.detail, '\'');
    } else if (row.level == prefix_level) {
      print_prefix(node, row.spelling);
    } else if (row.level < prefix_level && node.op != ReachOp::choice) {
      print_binary(node, row);
    } else {
      print_brackets(node, row.spelling);
    }
  }

  // What a constant looks like decides how it is held together with what stands around it.
  OperatorLevel level_of_node(const ReachNode& node) const {
    if (node.op != ReachOp::constant) return row_of(node.op).level;
    const std::string text = to_string(expr_.value(node));
    const bool is_plain = text.front() == '"' || text.front() == '{' || text == "true" ||
                          text == "false" || (text.front() >= '0' && text.front() <= '9');
    return is_plain ? postfix_level : prefix_level;
  }

  void print_operand(const ReachNode& node, std::size_t i, OperatorLevel level) {
    const ReachNode& operand = expr_.operand(node, i);
    const bool is_loose = level_of_node(operand) < level;
    if (is_loose) text_ += '(';
    print(operand);
    if (is_loose) text_ += ')';
  }

  void print_prefix(const ReachNode& node, std::string_view spelling) {
    if (node.op == ReachOp::state || node.op == ReachOp::enabled) {
      text_.append(node.detail, spelling.front());
    } else {
      text_ += spelling;
    }
    const std::size_t end = text_.size();
    print_operand(node, 0, prefix_level);
    // Words need a blank between them, and longer operators one to be read by.
    const bool touches = is_word_character(text_[end - 1]) && end < text_.size() &&
                         (is_word_character(text_[end]) || spelling.size() > 1);
    if (touches) text_.insert(end, 1, ' ');
  }

  void print_binary(const ReachNode& node, const OperatorRow& row) {
    const bool is_free = row.level == comparison_level || row.level == in_level;
    const std::size_t count = expr_.operands(node).size();
    for (std::size_t i = 0; i < count; ++i) {
      if (i > 0) ((text_ += ' ') += row.spelling) += ' ';
      const bool may_be_equal = node.op == ReachOp::implies ? i + 1 == count : i == 0;
      print_operand(node, i, may_be_equal && !is_free ? row.level : tighter(row.level));
    }
  }

  void print_brackets(const ReachNode& node, std::string_view spelling) {
    text_ += spelling;
    switch (node.op) {
      case ReachOp::choice:
        print_operand(node, 0, iff_level);
        text_ += " ? ";
        print_operand(node, 1, choice_level);
        text_ += " : ";
        return print_operand(node, 2, choice_level);
      case ReachOp::set:
        return print_list(node, 0, '{', '}');
      case ReachOp::threshold_list:
        print_index(node, 0, 0);
        return print_list(node, 1, '(', ')');
      case ReachOp::substring:
      case ReachOp::substring_from:
      case ReachOp::substring_to:
        return print_substring(node);
      default:
        return print_binding(node);
    }
  }

  void print_list(const ReachNode& node, std::size_t first, char open, char close) {
    text_ += open;
    for (std::size_t i = first; i < node.operand_count; ++i) {
      if (i > first) text_ += ", ";
      print_operand(node, i, choice_level);
    }
    text_ += close;
  }

  // "[k]", or an index with dots: `from` and `to` are positions of operands, 0 for none.
  void print_index(const ReachNode& node, std::size_t from, std::size_t to) {
    text_ += '[';
    print_operand(node, from, choice_level);
    if (to > from) {
      text_ += "..";
      print_operand(node, to, choice_level);
    }
    text_ += ']';
  }

  void print_substring(const ReachNode& node) {
    print_operand(node, 0, postfix_level);
    if (node.op == ReachOp::substring) return print_index(node, 1, 2);
    text_ += node.op == ReachOp::substring_to ? "[.." : "[";
    print_operand(node, 1, choice_level);
    text_ += node.op == ReachOp::substring_to ? "]" : "..]";
  }

  void print_binding(const ReachNode& node) {
    const std::size_t offset = node.op == ReachOp::threshold ? 1 : 0;
    if (offset > 0) print_index(node, 0, 0);
    const std::string_view relation = node.op == ReachOp::let ? " = " : " in ";
    for (std::size_t i = 0; i < expr_.declared_count(node); ++i) {
      text_ += i == 0 ? " " : ", ";
      (text_ += expr_.name(node, i)) += relation;
      print_operand(node, offset + i, choice_level);
    }
    const std::size_t body = node.operand_count - 1;
    if (node.has_condition) {
      text_ += " s.t. ";
      print_operand(node, body - 1, choice_level);
    }
    text_ += " { ";
    print_operand(node, body, choice_level);
    text_ += " }";
  }

  const ReachExpr& expr_;
  std::string text_;
  std::uint32_t depth_ = 0;
};

}  // namespace

std::string_view spelling_of(ReachOp op) { return row_of(op).spelling; }

OperatorLevel level_of(ReachOp op) { return row_of(op).level; }

std::string to_string(const ReachExpr& expr, const ReachNode& node) {
  return Printer(expr).run(node);
}

std::string applied(ReachOp op, std::span<const ReachValue> operands) {
  ReachExpr expr;
  std::vector<ReachNodeId> ids;
  for (const ReachValue& operand : operands) ids.push_back(expr.add_constant(operand, {}));
  return to_string(expr, expr.node(expr.add({.op = op, .detail = 1}, ids)));
}

}  // namespace vorel::reachlang
