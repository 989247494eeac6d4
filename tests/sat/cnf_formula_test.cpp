#include "sat/cnf_formula.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "base/run_state.h"
#include "sat/sat_testing.h"
#include "support/run_program.h"

namespace vorel::sat {
namespace {

TEST(CnfFormula, ClausesMeanWhatTheirLiteralsSay) {
  Random random(73);
  for (int round = 0; round < 300; ++round) {
    FormulaOf f(4);
    const Lits clause = random_lits(random, f.inputs, random.below(6));
    if (clause.size() == 2 && round % 2 == 0)
      f.formula.add_binary(clause[0], clause[1], f.formula.group(1));
    else
      f.formula.add_clause(clause, f.formula.group(1));
    for (Assignment a = 0; a < f.assignment_count(); ++a)
      ASSERT_EQ(f.possible(a), clause_holds(clause, a));
  }
}

void expect_at_most_one(const Lits& lits, std::uint32_t variables) {
  FormulaOf f(variables);
  f.formula.add_at_most_one(lits, f.formula.group(0));
  for (Assignment a = 0; a < f.assignment_count(); ++a) {
    const auto truths = std::ranges::count_if(lits, [&](Lit lit) { return holds(lit, a); });
    ASSERT_EQ(f.possible(a), truths <= 1) << "assignment " << a;
  }
}

TEST(AtMostOne, CountsCopiesComplementsAndConstants) {
  const Lit choices[] = {lit_of(0), ~lit_of(0), lit_of(1), ~lit_of(1), LitTrue, LitFalse};
  for (std::uint32_t number = 0; number < 1296; ++number) {  // of four literals
    Lits lits;
    for (std::uint32_t rest = number; lits.size() < 4; rest /= 6) lits.push_back(choices[rest % 6]);
    expect_at_most_one(lits, 2);
  }
}

TEST(AtMostOne, HoldsForRandomLists) {
  Random random(3);
  for (int round = 0; round < 150; ++round)
    expect_at_most_one(random_lits(random, 5, random.below(6), round % 3 == 0), 5);
}

TEST(AtMostOne, HoldsForListsOnBothSidesOfTheStepFromPairsToAChain) {
  for (std::uint32_t size = 5; size <= 9; ++size) expect_at_most_one(fixing(size, 0xAA), size);
}

TEST(CnfFormula, ContradictoryGroupIsForgottenWhenItIsRenewed) {
  FormulaOf f(1);
  const ClauseGroup old = f.formula.group(2);
  f.formula.add_clause(Lits{LitFalse, LitFalse}, old);
  EXPECT_FALSE(f.formula.solve());
  const ClauseGroup fresh = f.formula.renew_group(old);
  EXPECT_NE(fresh, old);
  EXPECT_EQ(f.formula.group(2), fresh);
  EXPECT_TRUE(f.formula.solve());
  f.formula.remove_group(fresh);
  EXPECT_EQ(f.formula.group(2), removed_group);
}

TEST(CnfFormula, ResetGivesAnEmptyFormulaWithItsGroups) {
  FormulaOf f(2);
  f.formula.add_clause({}, PermanentGroup);
  f.formula.remove_group(f.formula.group(0));
  f.formula.reset();
  EXPECT_EQ(f.formula.solver().num_vars(), 0u);
  f.formula.add_clause({}, f.formula.group(0));
  EXPECT_FALSE(f.formula.solve());
  f.formula.renew_group(f.formula.group(0));
  EXPECT_TRUE(f.formula.solve());
}

TEST(CnfFormula, ValuesOfComplementsAndConstantsFollowTheModel) {
  FormulaOf f(2);
  f.formula.add_units(fixing(2, 1), false, PermanentGroup);
  const Lit free = f.formula.new_vars(1)[0];
  ASSERT_TRUE(f.formula.solve());
  EXPECT_TRUE(f.formula.is_true(lit_of(0)) && f.formula.is_true(~lit_of(1)));
  EXPECT_EQ(f.formula.value(~lit_of(0)), ModelValue::no);
  EXPECT_EQ(f.formula.value(~free), ModelValue::undefined);
  EXPECT_EQ(f.formula.value(LitTrue), ModelValue::yes);
  EXPECT_EQ(f.formula.value(LitFalse), ModelValue::no);
}

TEST(CnfFormula, UnknownSolverGetsAWarningAndTheDefault) {
  testing::internal::CaptureStderr();
  CnfFormula formula(CnfParams{.solver = 2});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nWarning: there is no SAT solver 2; the default SAT solver is used\n");
  EXPECT_TRUE(formula.solve());
}

TEST(CnfFormula, TellsItsSizeAndAddsToTheTicksOfTheRun) {
  FormulaOf f(3);
  f.formula.add_binary(lit_of(0), lit_of(1), PermanentGroup);
  std::ostringstream out;
  f.formula.print_size(out);
  EXPECT_EQ(out.str(), "Original Num Var/Cl/Lit\t\t\t3/1/2");
  const std::uint64_t before = base::run_state().sat_ticks;
  f.formula.solve();
  EXPECT_GT(base::run_state().sat_ticks, before);
}

// A folder of its own to write formula.cnf into.
class StoredFormula : public testing::Test {
 protected:
  StoredFormula() { std::filesystem::current_path(folder_.path()); }
  ~StoredFormula() override { std::filesystem::current_path(old_); }

 private:
  const std::filesystem::path old_ = std::filesystem::current_path();
  const support::TemporaryFolder folder_;
};

TEST_F(StoredFormula, IsWrittenAsPlainClausesOfTheGroupsThatThereAre) {
  FormulaOf f(2);
  f.formula.add_binary(lit_of(0), ~lit_of(1), PermanentGroup);
  f.formula.add_binary(~lit_of(0), lit_of(1), f.formula.group(0));
  const auto stored = [&f] {
    f.formula.store_formula();
    return support::read_text("formula.cnf");
  };
  EXPECT_EQ(stored(), "p cnf 3 3\n1 -2 0\n-1 2 3 0\n-3 0\n");
  f.formula.renew_group(f.formula.group(0));
  f.formula.add_clause(Lits{lit_of(0), lit_of(1)}, f.formula.group(0));
  EXPECT_EQ(stored(), "p cnf 4 5\n3 0\n1 -2 0\n-1 2 3 0\n1 2 4 0\n-4 0\n");
}

TEST_F(StoredFormula, UnwritableFileIsAWarningAndTheSolveGoesOn) {
  std::filesystem::create_directory("formula.cnf");
  testing::internal::CaptureStderr();
  CnfFormula formula(CnfParams{.store_cnf_formula = true});
  EXPECT_TRUE(formula.solve());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nWarning: cannot open \"formula.cnf\" for output\n");
}

TEST(DefinitionRecorder, KeepsGatesAndOccurrencesUntilTheirGroupGoes) {
  FormulaOf f(3);
  DefinitionRecorder recorder;
  f.formula.set_recorder(&recorder);
  const ClauseGroup group = f.formula.group(0);
  const Lits inputs = {lit_of(1), lit_of(0)};
  const Lit both = f.formula.make_gate(Gate(GateAnd, inputs), group);
  const Lit either = ~f.formula.make_gate(Gate(GateXor, {~lit_of(0), lit_of(1)}), PermanentGroup);
  f.formula.make_gate(Gate(GateAnd, {lit_of(2), LitTrue}), group);
  f.formula.add_clause(Lits{lit_of(2), both, lit_of(2)}, PermanentGroup);

  EXPECT_EQ(recorder.definition_count(), 2u);
  ASSERT_NE(recorder.definition(both.variable()), nullptr);
  EXPECT_EQ(to_string(recorder.definition(both.variable())->gate), "GateAnd(0, 1)");
  EXPECT_EQ(recorder.definition(both.variable())->group, group);
  EXPECT_EQ(recorder.definition(Var{0}), nullptr);
  EXPECT_TRUE(recorder.occurs(Var{0}, group) && recorder.occurs(Var{2}, PermanentGroup));
  EXPECT_FALSE(recorder.occurs(Var{2}, group));

  f.formula.remove_group(group);
  EXPECT_EQ(recorder.definition(both.variable()), nullptr);
  EXPECT_FALSE(recorder.occurs(Var{0}, group));
  EXPECT_TRUE(recorder.occurs(both.variable(), PermanentGroup));
  EXPECT_NE(recorder.definition(either.variable()), nullptr);
  f.formula.reset();
  EXPECT_EQ(recorder.definition_count(), 0u);
}

TEST(DefinitionRecorder, FirstDefinitionOfAVariableStays) {
  DefinitionRecorder recorder;
  recorder.record_gate(Var{5}, Gate(GateAnd, {lit_of(0), lit_of(1)}), ClauseGroup{0});
  recorder.record_gate(Var{5}, Gate(GateOr, {lit_of(0), lit_of(1)}), ClauseGroup{1});
  EXPECT_EQ(to_string(recorder.definition(Var{5})->gate), "GateAnd(0, 1)");
  recorder.remove_group(ClauseGroup{1});
  EXPECT_NE(recorder.definition(Var{5}), nullptr);
}

}  // namespace
}  // namespace vorel::sat
