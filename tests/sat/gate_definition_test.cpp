#include <gtest/gtest.h>

#include "sat/sat_testing.h"

namespace vorel {
namespace {

// Each half of a definition forbids one value of the output, where the function has the other.
void expect_defined(FormulaOf& f, Lit output, const Gate& gate, Polarity polarity) {
  for (Assignment a = 0; a < f.assignment_count(); ++a) {
    const bool value = gate_value(gate, a);
    ASSERT_TRUE(f.possible(a, output ^ !value)) << to_string(gate) << " for " << a;
    const bool forbidden = polarity == 0 || (polarity > 0) == !value;
    ASSERT_EQ(f.possible(a, output ^ value), !forbidden)
        << to_string(gate) << " for " << a << " with polarity " << polarity;
  }
}

// An output that is one of the inputs or a constant is defined in both directions anyway.
Polarity defined_polarity(const Gate& gate, Polarity polarity) {
  Gate normal = gate;
  normalise(normal);
  return normal.arity() < 2 ? 0 : polarity;
}

std::size_t random_arity(Random& random, GateType type) {
  if (type == GateBuf) return 1;
  if (type >= GateMaj) return type == GateCmpXor ? 4 : 3;
  return random.below(6);
}

TEST(GateDefinition, OutputOfEveryTypeFollowsItsFunctionInTheWantedDirections) {
  Random random(1);
  for (std::uint32_t type = GateBuf; type < gate_type_count; ++type)
    for (const Polarity polarity : {-1, 0, 1})
      for (int round = 0; round < 12; ++round) {
        FormulaOf f(4);
        // Without constants in half of the rounds, so that most gates stay what they are.
        const auto gate_type = static_cast<GateType>(type);
        const Gate gate(gate_type, random_lits(random, f.inputs, random_arity(random, gate_type),
                                               round % 2 == 0));
        const Lit output = f.formula.make_gate(gate, PermanentGroup, polarity);
        expect_defined(f, output, gate, defined_polarity(gate, polarity));
      }
}

TEST(GateDefinition, GatesOverDistinctVariablesFollowTheirFunction) {
  for (std::uint32_t type = GateXor; type < gate_type_count; ++type)
    for (const Polarity polarity : {-1, 0, 1})
      for (std::uint32_t signs = 0; signs < 16; ++signs) {
        FormulaOf f(4);
        Lits inputs;
        for (std::uint32_t v = 0; v < (type < GateMaj || type == GateCmpXor ? 4u : 3u); ++v)
          inputs.push_back(lit_of(v) ^ (((signs >> v) & 1u) != 0));
        const Gate gate(static_cast<GateType>(type), inputs);
        expect_defined(f, f.formula.make_gate(gate, PermanentGroup, polarity), gate, polarity);
      }
}

TEST(GateDefinition, WideGatesFollowTheirFunction) {
  for (const GateType type : {GateXor, GateAnd, GateOr, GateEq})
    for (std::uint32_t arity = 4; arity <= 8; ++arity)
      for (const Polarity polarity : {-1, 0, 1}) {
        FormulaOf f(arity);
        const Gate gate(type, fixing(arity, 0x5A));
        expect_defined(f, f.formula.make_gate(gate, PermanentGroup, polarity), gate, polarity);
      }
}

void expect_upgraded(const Gate& gate, Polarity first, Polarity second) {
  FormulaOf f(5);
  LitCell cell;
  const Lit output = f.formula.define_gate(cell, gate.type(), gate.inputs(), PermanentGroup, first);
  const std::uint32_t variables = f.formula.solver().num_vars();
  EXPECT_EQ(f.formula.define_gate(cell, gate.type(), gate.inputs(), PermanentGroup, second),
            output);
  EXPECT_EQ(f.formula.solver().num_vars(), variables);
  EXPECT_EQ(cell.polarity, 0);
  expect_defined(f, output, gate, 0);
}

TEST(GateDefinition, SecondRequestAddsTheOtherHalfAndNoVariable) {
  for (std::uint32_t number = GateBuf; number < gate_type_count; ++number) {
    const auto type = static_cast<GateType>(number);
    const std::vector<std::uint32_t> arities = type == GateBuf      ? std::vector{1u}
                                               : type == GateCmpXor ? std::vector{4u}
                                               : type >= GateMaj    ? std::vector{3u}
                                                                    : std::vector{2u, 3u, 4u, 5u};
    for (const std::uint32_t arity : arities)
      for (const Assignment signs : {0x15u, 0x0Eu})
        for (const Polarity first : {-1, 1})
          for (const Polarity second : {-first, 0})
            expect_upgraded(Gate(type, fixing(arity, signs)), first, second);
  }
}

TEST(GateDefinition, RepeatedRequestAddsNothing) {
  FormulaOf f(3);
  LitCell cell;
  const Lits inputs = {lit_of(0), lit_of(1), lit_of(2)};
  f.formula.define_gate(cell, GateMaj, inputs, PermanentGroup, +1);
  const std::uint64_t clauses = f.formula.solver().num_clauses();
  EXPECT_EQ(clauses, 3u);
  f.formula.define_gate(cell, GateMaj, inputs, PermanentGroup, +1);
  EXPECT_EQ(f.formula.solver().num_clauses(), clauses);
  f.formula.define_gate(cell, GateMaj, inputs, PermanentGroup, -1);
  EXPECT_EQ(f.formula.solver().num_clauses(), 6u);
}

TEST(GateDefinition, ConstantOutputNeedsNoVariableAndServesEveryPolarity) {
  FormulaOf f(1);
  LitCell cell;
  const Lits inputs = {lit_of(0), ~lit_of(0)};
  EXPECT_EQ(f.formula.define_gate(cell, GateOr, inputs, PermanentGroup, -1), LitTrue);
  EXPECT_TRUE(cell.serves(0) && cell.serves(1));
  EXPECT_EQ(f.formula.solver().num_vars(), 1u);
}

TEST(GateDefinition, RestrictedBranchingFindsTheSameModels) {
  CnfFormula formula(CnfParams{.restrict_branching = true});
  const Lit a(formula.new_var(false), false), b(formula.new_var(false), false);
  const Lit both = formula.make_gate(Gate(GateAnd, {a, b}), PermanentGroup);
  formula.add_unit(formula.make_gate(Gate(GateXor, {both, a}), PermanentGroup), PermanentGroup);
  ASSERT_TRUE(formula.solve());
  EXPECT_TRUE(formula.is_true(a) && formula.is_true(~b) && formula.is_true(~both));
}

}  // namespace
}  // namespace vorel
