#include "sat/gate.h"

#include <gtest/gtest.h>

#include <set>

#include "sat/sat_testing.h"

namespace vorel::sat {
namespace {

constexpr std::uint32_t variable_count = 4;

bool is_essential(const Gate& gate, std::uint32_t variable) {
  for (Assignment a = 0; a < 1u << variable_count; ++a)
    if (gate_value(gate, a) != gate_value(gate, a ^ (1u << variable))) return true;
  return false;
}

std::size_t essential_inputs(const Gate& gate) {
  std::size_t count = 0;
  for (std::uint32_t v = 0; v < variable_count; ++v) count += is_essential(gate, v) ? 1 : 0;
  return count;
}

void expect_normal_form(const Gate& gate) {
  std::set<Var> variables;
  for (const Lit lit : gate.inputs()) {
    EXPECT_TRUE(lit.is_variable());
    EXPECT_TRUE(variables.insert(lit.variable()).second) << to_string(gate);
    EXPECT_FALSE(gate.type() == GateXor && lit.negated()) << to_string(gate);
  }
  EXPECT_EQ(gate.code(), gate_code(gate.type(), gate.arity()));
  EXPECT_EQ(gate.arity() == 0, gate.type() == GateConst) << to_string(gate);
  EXPECT_EQ(gate.arity() == 1, gate.type() == GateBuf) << to_string(gate);
  EXPECT_FALSE(gate.type() == GateEq && gate.arity() == 2);
  const bool symmetric = gate.type() <= GateMaj;
  EXPECT_TRUE(!symmetric || std::ranges::is_sorted(gate.inputs())) << to_string(gate);
  EXPECT_TRUE(gate.type() != GateLess || gate.inputs()[1] < gate.inputs()[2]);
}

void expect_normalises(const Gate& original) {
  Gate gate = original;
  const bool inverted = normalise(gate);
  for (Assignment a = 0; a < 1u << variable_count; ++a)
    ASSERT_EQ(gate_value(gate, a) != inverted, gate_value(original, a))
        << to_string(original) << " became " << to_string(gate) << " for " << a;
  EXPECT_EQ(gate.arity(), essential_inputs(original))
      << to_string(original) << " became " << to_string(gate);
  expect_normal_form(gate);
}

// Every gate over constants and literals of four variables.
void for_each_gate(GateType type, std::size_t arity) {
  constexpr std::uint32_t choices = 2 * variable_count + 2;
  std::uint32_t count = 1;
  for (std::size_t i = 0; i < arity; ++i) count *= choices;
  for (std::uint32_t number = 0; number < count; ++number) {
    Lits lits;
    for (std::uint32_t rest = number; lits.size() < arity; rest /= choices) {
      const std::uint32_t choice = rest % choices;
      lits.push_back(choice < 2 * variable_count ? Lit::from_code(choice)
                                                 : constant_lit(choice % 2 == 0));
    }
    expect_normalises(Gate(type, lits));
    if (testing::Test::HasFailure()) return;
  }
}

TEST(GateNormalForm, KeepsTheFunctionOfEveryGateOfFixedArity) {
  expect_normalises(Gate(GateConst, {}));
  for_each_gate(GateBuf, 1);
  for (const GateType type : {GateMaj, GateOrXor, GateMux, GateLess, GateAndEq})
    for_each_gate(type, 3);
  for_each_gate(GateCmpXor, 4);
}

TEST(GateNormalForm, KeepsTheFunctionOfSmallGatesOfAnyArity) {
  for (const GateType type : {GateXor, GateAnd, GateOr, GateEq})
    for (std::size_t arity = 0; arity <= 3; ++arity) for_each_gate(type, arity);
}

TEST(GateNormalForm, KeepsTheFunctionOfWideGates) {
  Random random(7);
  for (const GateType type : {GateXor, GateAnd, GateOr, GateEq})
    for (int round = 0; round < 300; ++round)
      expect_normalises(Gate(type, random_lits(random, variable_count, 4 + random.below(5))));
}

TEST(GateNormalForm, EqualGatesGetEqualForms) {
  const Lit a = lit_of(0), b = lit_of(1), c = lit_of(2), d = lit_of(3);
  const std::vector<std::pair<Gate, Gate>> pairs = {
      {Gate(GateMaj, {c, ~a, b}), Gate(GateMaj, {b, c, ~a})},
      {Gate(GateOrXor, {b, a, c}), Gate(GateOrXor, {a, b, c})},
      {Gate(GateLess, {a, c, b}), Gate(GateLess, {a, ~b, ~c})},
      {Gate(GateAndEq, {a, c, b}), Gate(GateAndEq, {a, b, c})},
      {Gate(GateCmpXor, {a, b, d, c}), Gate(GateCmpXor, {a, b, c, d})},
      {Gate(GateXor, {~a, b, ~c}), Gate(GateXor, {c, a, b})},
  };
  for (auto [first, second] : pairs) {
    EXPECT_EQ(normalise(first), normalise(second));
    EXPECT_EQ(to_string(first), to_string(second));
  }
}

}  // namespace
}  // namespace vorel::sat
