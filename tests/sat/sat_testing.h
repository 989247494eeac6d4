// tests/sat/sat_testing.h - what the tests of the SAT layer share.
// Here:      evaluation of literals, clauses and gates by definition, and questions to a formula.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "oracle/random.h"
#include "sat/cnf_formula.h"

namespace vorel::sat {

// Bit v is the value of variable v.
using Assignment = std::uint32_t;

inline Lit lit_of(std::uint32_t variable) { return Lit(Var{variable}, false); }

inline bool holds(Lit lit, Assignment assignment) {
  if (lit.is_constant()) return lit == LitTrue;
  return (((assignment >> static_cast<std::uint32_t>(lit.variable())) & 1u) != 0) != lit.negated();
}

inline bool clause_holds(std::span<const Lit> clause, Assignment assignment) {
  return std::ranges::any_of(clause, [&](Lit lit) { return holds(lit, assignment); });
}

// The gate types by their definitions.
inline bool gate_value(GateType type, const std::vector<bool>& in) {
  const auto ones = static_cast<std::size_t>(std::ranges::count(in, true));
  switch (type) {
    case GateConst:
      return false;
    case GateBuf:
      return in[0];
    case GateXor:
      return ones % 2 == 1;
    case GateAnd:
      return ones == in.size();
    case GateOr:
      return ones > 0;
    case GateEq:
      return ones == 0 || ones == in.size();
    case GateMaj:
      return ones >= 2;
    case GateOrXor:
      return (in[0] || in[1]) != in[2];
    case GateMux:
      return in[0] ? in[2] : in[1];
    case GateLess:
      return int{in[0]} + int{!in[1]} + int{in[2]} >= 2;
    case GateAndEq:
      return in[0] && in[1] == in[2];
    case GateCmpXor:
      return (in[2] == in[3]) != (in[0] && !in[1]);
  }
  return false;
}

inline bool gate_value(const Gate& gate, Assignment assignment) {
  std::vector<bool> values;
  for (const Lit lit : gate.inputs()) values.push_back(holds(lit, assignment));
  return gate_value(gate.type(), values);
}

using oracle::Random;

// A variable of the first `variable_count`, or a constant.
inline Lit random_lit(Random& random, std::uint32_t variable_count, bool constants = true) {
  const std::uint32_t choice = random.below(2 * variable_count + (constants ? 2 : 0));
  return choice < 2 * variable_count ? Lit::from_code(choice) : constant_lit(choice % 2 == 0);
}

inline Lits random_lits(Random& random, std::uint32_t variable_count, std::size_t size,
                        bool constants = true) {
  Lits lits;
  for (std::size_t i = 0; i < size; ++i)
    lits.push_back(random_lit(random, variable_count, constants));
  return lits;
}

// The literals that fix the first variables to their values.
inline Lits fixing(std::uint32_t variable_count, Assignment assignment) {
  Lits lits;
  for (std::uint32_t v = 0; v < variable_count; ++v)
    lits.push_back(lit_of(v) ^ !holds(lit_of(v), assignment));
  return lits;
}

// A formula whose first variables are free inputs, and questions to it.
struct FormulaOf {
  explicit FormulaOf(std::uint32_t input_count, int solver = 1)
      : formula(CnfParams{.solver = solver}), inputs(input_count) {
    for (std::uint32_t i = 0; i < input_count; ++i) formula.new_var(false);
  }

  // Whether there is a model with all these literals true. The model stays readable.
  bool possible(std::span<const Lit> lits) {
    const ClauseGroup question = formula.new_group();
    formula.add_units(lits, false, question);
    const bool answer = formula.solve();
    formula.remove_group(question);
    return answer;
  }
  bool possible(Assignment assignment, Lit lit = LitTrue) {
    Lits lits = fixing(inputs, assignment);
    lits.push_back(lit);
    return possible(lits);
  }
  Assignment assignment_count() const { return 1u << inputs; }

  CnfFormula formula;
  std::uint32_t inputs;
};

// A literal wanted with a polarity may be true only if it should (+1), false only if it should
// (-1); the other half of the definition must be missing if `is_half` says so.
template <class Expected>
void expect_literal(FormulaOf& f, Lit lit, Polarity polarity, Expected expected,
                    bool is_half = false) {
  for (Assignment a = 0; a < f.assignment_count(); ++a) {
    const bool value = expected(a);
    ASSERT_TRUE(f.possible(a, lit ^ !value)) << "for " << a << " polarity " << polarity;
    const bool forbidden = polarity == 0 || (polarity > 0) == !value;
    if (!forbidden && !is_half) continue;
    ASSERT_NE(f.possible(a, lit ^ value), forbidden) << "for " << a << " polarity " << polarity;
  }
}

}  // namespace vorel::sat
