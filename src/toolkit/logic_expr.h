// toolkit/logic_expr.h - a factored Boolean expression: what an implementation prints and counts.
// Here:      the tree, its texts, its literal count, negation, equality, hash.
// Not here:  making one from a cover (toolkit/factor.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace vorel::toolkit {

struct LogicExpr {
  struct And {
    std::vector<LogicExpr> operands;
    bool operator==(const And& other) const;
  };
  struct Or {
    std::vector<LogicExpr> operands;
    bool operator==(const Or& other) const;
  };
  struct Const {
    bool value = false;
    bool operator==(const Const&) const = default;
  };
  struct Literal {
    std::string name;
    bool negated = false;
    bool operator==(const Literal&) const = default;
  };

  bool is_literal() const { return std::holds_alternative<Literal>(node); }
  bool is_const() const { return std::holds_alternative<Const>(node); }
  bool operator==(const LogicExpr&) const = default;

  std::variant<And, Or, Const, Literal> node = Const{};
};

// "a (b + c')"; constants are "1" and "0".
std::string to_string(const LogicExpr& expression);

// "a & (b | ~c)"; constants are "1b`1" and "1b`0". Names are those of toolkit/verilog_name.h, where
// all must be able to stand in Verilog.
std::string to_verilog(const LogicExpr& expression);
// With the constants of the standard, 1'b1 and 1'b0.
std::string to_standard_verilog(const LogicExpr& expression);

// Number of leaves that are literals.
std::size_t literal_count(const LogicExpr& expression);

// By De Morgan's laws: the shape stays, conjunctions and disjunctions change places.
LogicExpr negate(const LogicExpr& expression);

std::uint32_t hash_of(const LogicExpr& expression);

}  // namespace vorel::toolkit

template <>
struct std::hash<vorel::toolkit::LogicExpr> {
  std::size_t operator()(const vorel::toolkit::LogicExpr& e) const {
    return vorel::toolkit::hash_of(e);
  }
};
