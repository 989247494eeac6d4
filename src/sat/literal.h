// sat/literal.h - variables, literals, polarities and clause groups.
// Here:      the small value types that everything in the SAT layer speaks.
// Not here:  clauses and gates (sat/gate.h, sat/cnf_formula.h).
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vorel::sat {

// A variable's number, counted from 0 by the solver.
enum class Var : std::uint32_t {};

inline constexpr Var var_uninit{2147483647};    // prints as "UNINIT"
inline constexpr Var var_constant{2147483646};  // prints as "CONST"

// Twice the variable, plus 1 if negated: a literal and its complement are neighbours when sorted.
// The constants lie above all variables, so sorting puts them last.
class Lit {
 public:
  constexpr Lit() = default;  // LitUninit
  constexpr Lit(Var variable, bool negated)
      : code_{2 * static_cast<std::uint32_t>(variable) + (negated ? 1u : 0u)} {}
  static constexpr Lit from_code(std::uint32_t code) {
    Lit literal;
    literal.code_ = code;
    return literal;
  }

  constexpr std::uint32_t code() const { return code_; }
  constexpr Var variable() const { return Var{code_ / 2}; }
  constexpr bool negated() const { return (code_ & 1u) != 0; }
  constexpr Lit operator~() const { return from_code(code_ ^ 1u); }
  // Complemented if `invert`.
  constexpr Lit operator^(bool invert) const { return from_code(code_ ^ (invert ? 1u : 0u)); }
  constexpr Lit positive() const { return from_code(code_ & ~1u); }

  constexpr bool is_constant() const;
  constexpr bool is_uninit() const;
  // Neither a constant nor uninitialised.
  constexpr bool is_variable() const;

  constexpr auto operator<=>(const Lit&) const = default;

 private:
  std::uint32_t code_ = 0xFFFFFFFEu;
};

inline constexpr Lit LitUninit = Lit::from_code(0xFFFFFFFEu);  // nothing allocated yet
inline constexpr Lit LitTrue = Lit::from_code(0xFFFFFFFDu);
inline constexpr Lit LitFalse = Lit::from_code(0xFFFFFFFCu);
static_assert(~LitTrue == LitFalse && ~LitFalse == LitTrue && Lit{} == LitUninit);

constexpr bool Lit::is_constant() const { return *this == LitTrue || *this == LitFalse; }
constexpr bool Lit::is_uninit() const { return variable() == var_uninit; }
constexpr bool Lit::is_variable() const { return *this < LitFalse; }

constexpr Lit constant_lit(bool value) { return value ? LitTrue : LitFalse; }

using Lits = std::vector<Lit>;

// "12" or "12'", "TRUE", "FALSE", "UNINIT".
std::string to_string(Lit literal);
// "12", "CONST", "UNINIT".
std::string to_string(Var variable);

// Which half of a gate's definition is wanted [PG-1986]: 0 both, +1 only "output implies
// definition" (the output stands positively in clauses), -1 only "definition implies output".
using Polarity = int;
inline constexpr Polarity default_polarity = 0;

// A retractable set of clauses.
enum class ClauseGroup : std::int32_t {};
inline constexpr ClauseGroup PermanentGroup{-2};
inline constexpr ClauseGroup removed_group{-1};

// What an encoder keeps for each encoded object: its literal and the half of the definition that
// has been emitted (0: all of it).
struct LitCell {
  Lit lit = LitUninit;
  Polarity polarity = 0;

  // True when the literal can be used with this polarity as it stands.
  bool serves(Polarity wanted) const {
    return !lit.is_uninit() && (polarity == 0 || polarity == wanted);
  }
};

// A variable's or a literal's value in a model.
enum class ModelValue : std::uint8_t { yes = 0, no = 1, undefined = 2 };

}  // namespace vorel::sat

template <>
struct std::hash<vorel::sat::Lit> {
  std::size_t operator()(vorel::sat::Lit literal) const { return literal.code(); }
};
