// A recursive descent over the grammar, in which binary operators share one function that is told
// the least level to take [Pratt-1973]. What differs is that a run of one operator is a loop
// and becomes one node: the tree is as deep as brackets, prefix operators, choices and changes of
// operator are nested, and no deeper. Types are checked as soon as the operands of an operator have
// been read, so that the first fault of the text is told, of whichever kind it is.
#include "reachlang/parser.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/messages.h"
#include "reachlang/builtin_sets.h"
#include "reachlang/operator_tables.h"
#include "reachlang/scanner.h"
#include "reachlang/type_rules.h"

namespace vorel::reachlang {
namespace {

const BinaryRow* binary_row(TokenKind token) {
  const auto* row = std::ranges::find(binary_rows, token, &BinaryRow::token);
  return row == std::end(binary_rows) ? nullptr : row;
}

ReachOp binding_op(TokenKind token) {
  switch (token) {
    case TokenKind::forall:
      return ReachOp::forall;
    case TokenKind::exists:
      return ReachOp::exists;
    case TokenKind::xorsum:
      return ReachOp::xorsum;
    default:
      assert(token == TokenKind::gather);
      return ReachOp::gather;
  }
}

// How often $, @ or ' stands there.
std::uint32_t repeats_of(const Token& sign) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(sign.number, UINT32_MAX));
}

// A part of the text that has become a node.
struct Part {
  ReachNodeId node = 0;
  TextPosition start;
};
using MaybePart = std::optional<Part>;          // empty after an error
using MaybeType = std::optional<TypedOperand>;  // likewise
using Parts = std::vector<Part>;

struct Variable {
  std::string name;
  TypedOperand type;
};

class Parser {
 public:
  explicit Parser(std::string_view text) : scanner_{text} {
    for (const BuiltinSetRow& row : builtin_sets) {
      scope_.push_back({std::string(row.name), {{row.element, 1}, false}});
    }
  }

  // answer = exp .
  std::unique_ptr<ReachExpr> run() && {
    if (!advance()) return nullptr;
    const MaybePart whole = expression();
    if (!whole || !expect(TokenKind::end)) return nullptr;
    const std::string fault = check_property(typed(*whole));
    if (!fault.empty()) {
      report(fault, whole->start);
      return nullptr;
    }
    assert(&expr_.node(whole->node) == &expr_.root());
    return std::make_unique<ReachExpr>(std::move(expr_));
  }

 private:
  // Counts how deep the functions of the grammar stand in each other. What is nested too deeply is
  // refused before the stack overflows.
  class Nesting {
   public:
    explicit Nesting(Parser& parser) : parser_{parser} { ++parser_.nesting_; }
    ~Nesting() { --parser_.nesting_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
    bool is_too_deep() const { return parser_.nesting_ > 3 * max_reach_depth; }

   private:
    Parser& parser_;
  };

  // exp = binary [ "?" exp ":" exp ] .
  MaybePart expression() {
    const Nesting nesting(*this);
    MaybePart chooser = binary(iff_level);
    if (!chooser || token_.kind != TokenKind::question) return chooser;
    const TextPosition position = token_.position;
    if (!advance()) return {};
    const MaybePart then = expression();
    if (!then || !expect(TokenKind::colon, false) || !advance()) return {};
    const MaybePart otherwise = expression();
    if (!otherwise) return {};
    return apply(ReachOp::choice, {*chooser, *then, *otherwise}, chooser->start, position);
  }

  // binary = prefix { operator binary } , as far as the operators hold at least so tightly. What
  // stands to the right of an operator takes the tighter ones, so that a run of one operator, to
  // whichever side it groups, needs no depth.
  MaybePart binary(OperatorLevel lowest) {
    const Nesting nesting(*this);
    MaybePart left = prefix();
    while (left) {
      const BinaryRow* row = binary_row(token_.kind);
      if (row == nullptr || level_of(row->op) < lowest) break;
      left = row->associativity == Associativity::none ? pair(*row, *left) : run_of(*row, *left);
    }
    return left;
  }

  MaybePart pair(const BinaryRow& row, const Part& left) {
    const TextPosition position = token_.position;
    if (!advance()) return {};
    const MaybePart right = binary(tighter(level_of(row.op)));
    if (!right) return {};
    const BinaryRow* next = binary_row(token_.kind);
    if (next != nullptr && level_of(next->op) == level_of(row.op)) return unexpected();
    return apply(row.op, {left, *right}, left.start, position);
  }

  // A run becomes one node, but each of its operators is checked by itself, with the part of the
  // run on the side to which it groups.
  MaybePart run_of(const BinaryRow& row, const Part& left) {
    const bool is_left = row.associativity == Associativity::left;
    Parts parts{left};
    std::vector<TextPosition> operators;
    MaybeType whole = typed(left);
    while (token_.kind == row.token) {
      operators.push_back(token_.position);
      if (!advance()) return {};
      const MaybePart next = binary(tighter(level_of(row.op)));
      if (!next) return {};
      parts.push_back(*next);
      if (is_left) {
        whole = checked(row.op, std::array{*whole, typed(*next)}, std::array{left, *next},
                        operators.back());
        if (!whole) return {};
      }
    }
    if (!is_left) whole = typed(parts.back());
    for (std::size_t i = operators.size(); !is_left && i-- > 0;) {
      whole = checked(row.op, std::array{typed(parts[i]), *whole},
                      std::array{parts[i], parts[i + 1]}, operators[i]);
      if (!whole) return {};
    }
    return add({.op = row.op, .is_dynamic = whole->is_dynamic, .type = whole->type}, parts,
               left.start);
  }

  // prefix = operator prefix | postfix .
  MaybePart prefix() {
    const Nesting nesting(*this);
    if (nesting.is_too_deep()) return refuse_depth();
    const auto* row = std::ranges::find(prefix_rows, token_.kind, &PrefixRow::token);
    if (row == std::end(prefix_rows)) return postfix();
    const Token sign = token_;
    if (!advance()) return {};
    const MaybePart operand = prefix();
    if (!operand) return {};
    return apply(row->op, {*operand}, sign.position, sign.position, repeats_of(sign));
  }

  // postfix = primary { "'" | "[" exp ".." [ exp ] "]" | "[" ".." exp "]" } .
  MaybePart postfix() {
    MaybePart part = primary();
    while (part) {
      const Token sign = token_;
      if (sign.kind == TokenKind::next) {
        if (!advance()) return {};
        part = apply(ReachOp::next_state, {*part}, part->start, sign.position, repeats_of(sign));
      } else if (sign.kind == TokenKind::open_bracket) {
        part = substring(*part);
      } else {
        break;
      }
    }
    return part;
  }

  MaybePart substring(const Part& whole) {
    const TextPosition position = token_.position;
    if (!advance()) return {};
    Parts parts{whole};
    ReachOp op = ReachOp::substring;
    if (token_.kind == TokenKind::dot_dot) {
      op = ReachOp::substring_to;
    } else if (!append_expression(parts)) {
      return {};
    }
    if (!expect(TokenKind::dot_dot, false) || !advance()) return {};
    if (op == ReachOp::substring && token_.kind == TokenKind::close_bracket) {
      op = ReachOp::substring_from;
    } else if (!append_expression(parts) || !expect(TokenKind::close_bracket, false)) {
      return {};
    }
    if (!advance()) return {};
    return apply(op, parts, whole.start, position);
  }

  MaybePart primary() {
    switch (token_.kind) {
      case TokenKind::true_:
      case TokenKind::false_:
        return constant(ReachValue(token_.kind == TokenKind::true_), BaseType::boolean);
      case TokenKind::number:
        return constant(ReachValue(static_cast<std::int64_t>(token_.number)), BaseType::numerical);
      case TokenKind::text:
        return constant(ReachValue(token_.text), BaseType::string);
      case TokenKind::identifier:
        return variable();
      case TokenKind::open_paren:
        return parentheses();
      case TokenKind::open_brace:
        return set();
      case TokenKind::forall:
      case TokenKind::exists:
      case TokenKind::xorsum:
      case TokenKind::gather:
        return quantifier();
      case TokenKind::threshold:
        return threshold();
      case TokenKind::let:
        return let();
      default:
        return unexpected();
    }
  }

  MaybePart constant(ReachValue value, BaseType base) {
    const Part part{expr_.add_constant(std::move(value), {base, 0}), token_.position};
    if (!advance()) return {};
    return part;
  }

  MaybePart variable() {
    const auto found =
        std::ranges::find(scope_.rbegin(), scope_.rend(), token_.text, &Variable::name);
    if (found == scope_.rend()) {
      return report("Undeclared identifier: " + token_.text, token_.position);
    }
    ReachNode node{.op = ReachOp::variable,
                   .is_dynamic = found->type.is_dynamic,
                   .type = found->type.type,
                   .detail = static_cast<std::uint32_t>(scope_.rend() - found - 1),
                   .first_name = expr_.add_name(token_.text)};
    const Part part{expr_.add(node, {}), token_.position};
    if (!advance()) return {};
    return part;
  }

  // "(" exp ")" .
  MaybePart parentheses() {
    const TextPosition start = token_.position;
    if (!advance()) return {};
    MaybePart inner = expression();
    if (!inner || !expect(TokenKind::close_paren, false) || !advance()) return {};
    inner->start = start;
    return inner;
  }

  // expnlst = exp { "," exp } , up to the bracket that ends it.
  bool list(Parts& parts, TokenKind end) {
    do {
      if (!advance() || !append_expression(parts)) return false;
    } while (token_.kind == TokenKind::comma);
    if (token_.kind != end) {
      unexpected({TokenKind::comma, end});
      return false;
    }
    return advance();
  }

  bool append_expression(Parts& parts) {
    const MaybePart part = expression();
    if (part) parts.push_back(*part);
    return part.has_value();
  }

  // "{" expnlst "}" .
  MaybePart set() {
    const TextPosition start = token_.position;
    Parts parts;
    if (!list(parts, TokenKind::close_brace)) return {};
    return apply(ReachOp::set, parts, start, start);
  }

  // ( "forall" | "exists" | "xorsum" ) decl_in { "," decl_in } st "{" exp "}"
  // | "gather" decl_in st "{" exp "}" .
  MaybePart quantifier() {
    const Token keyword = token_;
    const ReachOp op = binding_op(keyword.kind);
    return advance() ? binding(op, keyword.position, {}) : MaybePart{};
  }

  // threshold = "threshold" [ "[" exp "]" ] ( "(" expnlst ")" | decl_in st "{" exp "}" ) .
  MaybePart threshold() {
    const TextPosition start = token_.position;
    if (!advance()) return {};
    const MaybePart least = least_count();
    if (!least) return {};
    Parts parts{*least};
    if (token_.kind == TokenKind::identifier) return binding(ReachOp::threshold, start, parts);
    if (token_.kind != TokenKind::open_paren) {
      return unexpected({TokenKind::identifier, TokenKind::open_paren});
    }
    if (!list(parts, TokenKind::close_paren)) return {};
    return apply(ReachOp::threshold_list, parts, start, start);
  }

  MaybePart least_count() {
    if (token_.kind != TokenKind::open_bracket) {
      const auto two = expr_.add_constant(ReachValue(std::int64_t{2}), {BaseType::numerical, 0});
      return Part{two, token_.position};
    }
    if (!advance()) return {};
    const MaybePart least = expression();
    if (!least) return {};
    const std::string fault = check_threshold(typed(*least));
    if (!fault.empty()) return report(fault, least->start);
    if (!expect(TokenKind::close_bracket, false) || !advance()) return {};
    return least;
  }

  // The part of a quantifier behind its keyword; `parts` are the operands so far.
  MaybePart binding(ReachOp op, const TextPosition& start, Parts parts) {
    const std::size_t outer = scope_.size();
    const bool takes_several = op != ReachOp::gather && op != ReachOp::threshold;
    do {
      if (!domain(parts)) return {};
    } while (takes_several && token_.kind == TokenKind::comma && advance());
    ReachNode node{.op = op};
    if (token_.kind == TokenKind::such_that) {
      node.has_condition = true;
      if (!advance() || !such_that(parts)) return {};
    }
    return body(node, start, parts, outer, {TokenKind::open_brace});
  }

  // decl_in = TOK_ID "in" exp .
  bool domain(Parts& parts) {
    if (!expect(TokenKind::identifier)) return false;
    const Token name = token_;
    if (!advance() || !expect(TokenKind::in) || !advance() || !append_expression(parts)) {
      return false;
    }
    const TypedOperand type = typed(parts.back());
    const std::string fault = check_domain(type, name.text);
    if (!fault.empty()) return report(fault, parts.back().start).has_value();
    scope_.push_back({name.text, {element_of(type.type), false}});
    return true;
  }

  bool such_that(Parts& parts) {
    if (!append_expression(parts)) return false;
    const std::string fault = check_condition(typed(parts.back()));
    return fault.empty() || report(fault, parts.back().start).has_value();
  }

  // "let" decl_eq { "," decl_eq } "{" exp "}" .
  MaybePart let() {
    const TextPosition start = token_.position;
    const std::size_t outer = scope_.size();
    Parts parts;
    do {
      if (!advance() || !definition(parts)) return {};
    } while (token_.kind == TokenKind::comma);
    return body({.op = ReachOp::let}, start, parts, outer,
                {TokenKind::comma, TokenKind::open_brace});
  }

  // decl_eq = TOK_ID "=" exp .
  bool definition(Parts& parts) {
    if (!expect(TokenKind::identifier)) return false;
    const Token name = token_;
    if (!advance() || !expect(TokenKind::equal) || !advance() || !append_expression(parts)) {
      return false;
    }
    scope_.push_back({name.text, typed(parts.back())});
    return true;
  }

  // "{" exp "}" , at the end of what declares the variables from `outer` on.
  MaybePart body(ReachNode node, const TextPosition& start, Parts& parts, std::size_t outer,
                 std::initializer_list<TokenKind> expected) {
    if (token_.kind != TokenKind::open_brace) return unexpected(expected);
    if (!advance() || !append_expression(parts)) return {};
    const TypedOperand type = typed(parts.back());
    const std::string fault = check_body(node.op, type);
    if (!fault.empty()) return report(fault, parts.back().start);
    if (!expect(TokenKind::close_brace, false) || !advance()) return {};
    const TypedOperand whole = type_of_binding(node.op, type);
    node.type = whole.type;
    node.is_dynamic = whole.is_dynamic;
    for (std::size_t i = outer; i < scope_.size(); ++i) {
      const std::uint32_t position = expr_.add_name(scope_[i].name);
      if (i == outer) node.first_name = position;
    }
    scope_.resize(outer);
    return add(node, parts, start);
  }

  // Checks the types and makes the node. `position` is that of the operator.
  MaybePart apply(ReachOp op, const Parts& parts, const TextPosition& start,
                  const TextPosition& position, std::uint32_t repeats = 1) {
    types_.clear();
    for (const Part& part : parts) types_.push_back(typed(part));
    const MaybeType type = checked(op, types_, parts, position, repeats);
    if (!type) return {};
    const ReachNode node{.op = op,
                         .is_dynamic = type->is_dynamic,
                         .type = type->type,
                         .detail = repeats,
                         .position = position};
    return add(node, parts, start);
  }

  // What the operator yields for operands of these types, which begin where these parts do.
  MaybeType checked(ReachOp op, std::span<const TypedOperand> types, std::span<const Part> parts,
                    const TextPosition& position, std::uint32_t repeats = 1) {
    const TypeVerdict verdict = check_operands(op, types, repeats);
    if (verdict.is_right()) return verdict.result;
    const bool is_operator = verdict.culprit == TypeVerdict::the_operator;
    report(verdict.message, is_operator ? position : parts[verdict.culprit].start);
    return {};
  }

  MaybePart add(const ReachNode& node, const Parts& parts, const TextPosition& start) {
    ids_.clear();
    for (const Part& part : parts) ids_.push_back(part.node);
    const ReachNodeId id = expr_.add(node, ids_);
    if (expr_.depth(id) > max_reach_depth) return refuse_depth();
    return Part{id, start};
  }

  TypedOperand typed(const Part& part) const {
    const ReachNode& node = expr_.node(part.node);
    return {node.type, node.is_dynamic};
  }

  bool advance() { return scanner_.next(token_); }

  // True if the token is of this kind. Where other tokens could stand as well, none is named.
  bool expect(TokenKind kind, bool is_only_one = true) {
    if (token_.kind == kind) return true;
    if (is_only_one) {
      unexpected({kind});
    } else {
      unexpected();
    }
    return false;
  }

  MaybePart unexpected(std::initializer_list<TokenKind> expected = {}) {
    std::string message = "syntax error, unexpected " + name_of(token_);
    const char* separator = ", expecting ";
    for (const TokenKind kind : expected) {
      message += separator + name_of(kind);
      separator = " or ";
    }
    return report(message, token_.position);
  }

  MaybePart refuse_depth() { return report("memory exhausted", token_.position); }

  MaybePart report(const std::string& message, const TextPosition& position) {
    base::print_error("incorrect syntax of the expression: " + message + located_at(position));
    return {};
  }

  Scanner scanner_;
  Token token_;
  ReachExpr expr_;
  std::vector<Variable> scope_;  // the position of a variable is the number of its binding
  std::uint32_t nesting_ = 0;
  std::vector<TypedOperand> types_;  // scratch
  std::vector<ReachNodeId> ids_;     // scratch
};

}  // namespace

std::unique_ptr<ReachExpr> parse_reach(std::string_view text) { return Parser(text).run(); }

}  // namespace vorel::reachlang
