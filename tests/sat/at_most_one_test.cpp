#include <gtest/gtest.h>

#include "sat/sat_testing.h"

namespace vorel::sat {
namespace {

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

}  // namespace
}  // namespace vorel::sat
