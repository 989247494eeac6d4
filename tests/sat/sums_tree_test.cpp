#include "sat/sums_tree_builder.h"

#include <gtest/gtest.h>

#include "sat/sat_testing.h"

namespace vorel::sat {
namespace {

void expect_parities(FormulaOf& f, const std::vector<Lits>& sets, const Lits& outputs) {
  for (std::size_t i = 0; i < sets.size(); ++i) {
    SCOPED_TRACE("set " + std::to_string(i));
    expect_literal(f, outputs[i], 0,
                   [&](Assignment a) { return gate_value(Gate(GateXor, sets[i]), a); });
  }
}

TEST(SumsTree, EveryRecordedLiteralIsTheParityOfItsSetInEveryModel) {
  Random random(41);
  for (std::uint32_t round = 0; round < 60; ++round) {
    const std::uint32_t inputs = 2 + round % 5;
    FormulaOf f(inputs, static_cast<int>(round % 2));
    SumsTreeBuilder builder(f.formula);
    std::vector<Lits> sets;
    Lits outputs;
    for (int batch = 0; batch < 2; ++batch) {  // what is recorded after emitting is emitted again
      for (std::size_t i = 0; i < 5; ++i) {
        sets.push_back(random_lits(random, inputs, random.below(inputs + 2), i == 0));
        outputs.push_back(builder.sums_literal(sets.back()));
      }
      builder.sums_emit(batch == 0 ? PermanentGroup : f.formula.group(0));
    }
    expect_parities(f, sets, outputs);
  }
}

TEST(SumsTree, ALiteralOfTheTreeMayStandInAnotherSet) {
  for (const int solver : {0, 1}) {
    FormulaOf f(3, solver);
    SumsTreeBuilder builder(f.formula);
    const Lit a = lit_of(0), b = lit_of(1), c = lit_of(2);
    const Lit ab = builder.sums_literal(Lits{a, b});
    const Lit none = builder.sums_literal(Lits{a, ab, b});
    const Lit only_c = builder.sums_literal(Lits{ab, b, c, a});
    EXPECT_EQ(builder.sums_literal(Lits{~b, a}), ~ab);
    builder.sums_emit();
    expect_parities(f, {{a, b}, {}, {c}}, {ab, none, only_c});
  }
}

TEST(SumsTree, ALargestIntersectionOfMostSetsIsTakenOutFirst) {
  std::vector<SumsSet> sets;
  const auto add = [&sets](std::initializer_list<std::uint32_t> variables) {
    Lits set;
    for (const std::uint32_t v : variables) set.push_back(lit_of(v));
    sets.push_back({set, lit_of(100 + static_cast<std::uint32_t>(sets.size()))});
  };
  add({0, 1, 2});
  add({0, 1, 3});
  add({0, 1});
  add({4, 5, 6});
  add({0, 5, 6});  // meets {0,1} too, once that has become a node
  const SumsTree tree = build_sums_tree(sets);
  const SumsTreeWeight weight = weight_of(tree);
  // {0,1} with {2} and {3}; {5,6} with {4} and {0}.
  EXPECT_EQ(tree.children.size(), 2u);
  EXPECT_EQ(weight.nodes, 7u);
  EXPECT_EQ(weight.optimised, 8u);
  EXPECT_EQ(weight.non_optimised, 16u);
  EXPECT_EQ(weight_of(build_sums_tree({})).nodes, 1u);

  FormulaOf f(7);
  SumsTreeBuilder builder(f.formula);
  for (const SumsSet& set : sets) builder.sums_literal(set.literals);
  builder.sums_emit();
  // A gate for each set, of which {0,1} is shared, and one for {5,6}.
  EXPECT_EQ(f.formula.solver().num_vars(), 7u + 5 + 1);
}

#ifndef NDEBUG
TEST(SumsTreeDeathTest, AFormulaIsNotSolvedBeforeTheTreeIsEmitted) {
  FormulaOf f(2);
  SumsTreeBuilder builder(f.formula);
  builder.sums_literal(fixing(2, 0));
  EXPECT_DEATH(f.formula.solve(), "promised");
  builder.sums_emit();
  EXPECT_TRUE(f.formula.solve());
}
#endif

}  // namespace
}  // namespace vorel::sat
