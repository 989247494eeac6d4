#include <gtest/gtest.h>

#include "sat/sat_testing.h"

namespace vorel::sat {
namespace {

void expect_defined(FormulaOf& f, Lit output, const Gate& gate, Polarity polarity) {
  SCOPED_TRACE(to_string(gate));
  expect_literal(
      f, output, polarity, [&](Assignment a) { return gate_value(gate, a); }, true);
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

}  // namespace
}  // namespace vorel::sat
