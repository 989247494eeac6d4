#include "toolkit/logic_expr.h"

#include <ranges>
#include <string_view>

#include "base/value_hash.h"
#include "toolkit/verilog_name.h"

namespace vorel::toolkit {
namespace {

using And = LogicExpr::And;
using Or = LogicExpr::Or;
using Const = LogicExpr::Const;
using Literal = LogicExpr::Literal;

struct Notation {
  std::string_view and_sign, or_sign, before_negated, after_negated, truth, falsity;
  std::string (*name)(std::string_view);
};
std::string plain_name(std::string_view name) { return std::string(name); }
constexpr Notation plain = {" ", " + ", "", "'", "1", "0", plain_name};
constexpr Notation verilog = {" & ", " | ", "~", "", "1b`1", "1b`0", verilog_name};
constexpr Notation standard_verilog = {" & ", " | ", "~", "", "1'b1", "1'b0", verilog_name};

class Writer {
 public:
  explicit Writer(const Notation& notation) : notation_{notation} {}

  void write(const LogicExpr& e) {
    std::visit([this](const auto& node) { write_node(node); }, e.node);
  }
  std::string text;

 private:
  void write_node(const And& node) {
    for (const LogicExpr& operand : node.operands) {
      if (&operand != node.operands.data()) text += notation_.and_sign;
      const bool bracketed = std::holds_alternative<Or>(operand.node);
      if (bracketed) text += '(';
      write(operand);
      if (bracketed) text += ')';
    }
  }
  void write_node(const Or& node) {
    for (const LogicExpr& operand : node.operands) {
      if (&operand != node.operands.data()) text += notation_.or_sign;
      write(operand);
    }
  }
  void write_node(const Const& node) { text += node.value ? notation_.truth : notation_.falsity; }
  void write_node(const Literal& node) {
    if (node.negated) text += notation_.before_negated;
    text += notation_.name(node.name);
    if (node.negated) text += notation_.after_negated;
  }

  const Notation& notation_;
};

std::string write(const LogicExpr& expression, const Notation& notation) {
  Writer writer(notation);
  writer.write(expression);
  return std::move(writer.text);
}

std::vector<LogicExpr> negate_all(const std::vector<LogicExpr>& operands) {
  std::vector<LogicExpr> negated;
  negated.reserve(operands.size());
  for (const LogicExpr& operand : operands) negated.push_back(negate(operand));
  return negated;
}

LogicExpr negate_node(const And& node) { return {Or{negate_all(node.operands)}}; }
LogicExpr negate_node(const Or& node) { return {And{negate_all(node.operands)}}; }
LogicExpr negate_node(const Const& node) { return {Const{!node.value}}; }
LogicExpr negate_node(const Literal& node) { return {Literal{node.name, !node.negated}}; }

// `kind` tells conjunctions from disjunctions of the same operands.
std::uint32_t hash_operands(const std::vector<LogicExpr>& operands, std::uint8_t kind) {
  std::uint32_t hash = base::hash_seed;
  for (const LogicExpr& operand : operands | std::views::reverse)
    hash = base::combine_hashes(hash, hash_of(operand));
  return base::combine_hashes(base::fnv1a(kind), hash);
}

std::uint8_t byte_of(bool flag) { return flag ? 1 : 0; }

std::uint32_t hash_node(const And& node) { return hash_operands(node.operands, 0); }
std::uint32_t hash_node(const Or& node) { return hash_operands(node.operands, 1); }
std::uint32_t hash_node(const Const& node) { return base::fnv1a(byte_of(node.value)); }
std::uint32_t hash_node(const Literal& node) {
  return base::combine_hashes(base::fnv1a(std::string_view{node.name}),
                              base::fnv1a(byte_of(node.negated)));
}

std::size_t count_all(const std::vector<LogicExpr>& operands) {
  std::size_t count = 0;
  for (const LogicExpr& operand : operands) count += literal_count(operand);
  return count;
}

}  // namespace

bool And::operator==(const And& other) const { return operands == other.operands; }
bool Or::operator==(const Or& other) const { return operands == other.operands; }

std::string to_string(const LogicExpr& expression) { return write(expression, plain); }

std::string to_verilog(const LogicExpr& expression) { return write(expression, verilog); }
std::string to_standard_verilog(const LogicExpr& expression) {
  return write(expression, standard_verilog);
}

std::size_t literal_count(const LogicExpr& expression) {
  if (const auto* node = std::get_if<And>(&expression.node)) return count_all(node->operands);
  if (const auto* node = std::get_if<Or>(&expression.node)) return count_all(node->operands);
  return expression.is_literal() ? 1 : 0;
}

LogicExpr negate(const LogicExpr& expression) {
  return std::visit([](const auto& node) { return negate_node(node); }, expression.node);
}

std::uint32_t hash_of(const LogicExpr& expression) {
  return std::visit([](const auto& node) { return hash_node(node); }, expression.node);
}

}  // namespace vorel::toolkit
