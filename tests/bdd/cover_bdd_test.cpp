#include "bdd/cover_bdd.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "bdd/bdd_cover.h"
#include "bdd/irredundant_sum.h"
#include "oracle/truth_tables.h"
#include "support/logic_values.h"
#include "support/seeds.h"

namespace vorel::bdd {
namespace {

using namespace oracle;

Table cube_table(const toolkit::Cube& cube, const std::vector<Table>& variables) {
  Table product = ~Table();
  for (std::size_t i = 0; i < cube.size(); ++i)
    if (cube[i] != toolkit::Ternary::dash)
      product &= cube[i] == toolkit::Ternary::one ? variables[i] : ~variables[i];
  return product;
}

Table cover_table(const toolkit::Cover& cover, const std::vector<Table>& variables) {
  Table sum;
  for (const toolkit::Cube& cube : cover) sum |= cube_table(cube, variables);
  return sum;
}

// Names of variables are "x" and their numbers.
Table expression_table(const toolkit::LogicExpr& expression) {
  return table_from([&](std::uint32_t a) {
    return support::value_of(expression, [&](const std::string& name) {
      return ((a >> std::stoul(name.substr(1))) & 1u) != 0;
    });
  });
}

std::vector<Table> tables_of(const std::vector<std::uint32_t>& variables) {
  std::vector<Table> tables;
  for (const std::uint32_t v : variables) tables.push_back(variable_table(v));
  return tables;
}

TEST(CoverBdd, AFunctionBecomesAMinimisedCoverAndItsExpression) {
  support::for_each_seed(200, [&](std::uint64_t seed) {
    Random random(seed);
    const Function f = random_function(random);
    const SupportCover form = cover_of(f.bdd);
    ASSERT_EQ(form.support, support_of(f.table));
    ASSERT_EQ(form.cover.width(), form.support.size());
    ASSERT_EQ(cover_table(form.cover, tables_of(form.support)), f.table);
    ASSERT_TRUE(std::ranges::is_sorted(form.cover));
    ASSERT_EQ(bdd_of(form.cover, f.bdd.support_variables()), f.bdd);

    const toolkit::LogicExpr expression = expression_of(f.bdd);
    ASSERT_EQ(expression_table(expression), f.table);
    ASSERT_EQ(literal_count(f.bdd), literal_count(expression));
    ASSERT_LE(literal_count(f.bdd), form.cover.literal_count());
  });
}

TEST(CoverBdd, AFunctionOfMorePathsThanCubesBecomesACoverAllTheSame) {
  // One cube a pair; each pair more than doubles the paths.
  constexpr std::uint32_t pairs = 11;
  std::vector<Bdd> variables;
  toolkit::Cover sum(2 * pairs, false);
  for (std::uint32_t i = 0; i < pairs; ++i) {
    variables.push_back(bdd_variable(2 * i));
    variables.push_back(bdd_variable(2 * i + 1));
    toolkit::Cube cube(2 * pairs, toolkit::Ternary::dash);
    cube.set(2 * i, toolkit::Ternary::one);
    cube.set(2 * i + 1, i % 2 == 0 ? toolkit::Ternary::one : toolkit::Ternary::zero);
    sum.add(cube);
  }
  sum.sort();
  EXPECT_EQ(cover_of(bdd_of(sum, variables)).cover, sum);

  support::for_each_seed(30, [&](std::uint64_t seed) {
    Random random(seed);
    const Function f = random_function(random);
    const std::vector<std::uint32_t> support = f.bdd.support();
    const toolkit::Cover cover = irredundant_sum(f.bdd, support);
    ASSERT_EQ(cover_table(cover, tables_of(support)), f.table);
  });
}

TEST(CoverBdd, PositionsOfACoverStandForAnyFunctions) {
  support::for_each_seed(60, [&](std::uint64_t seed) {
    Random random(seed);
    const std::size_t width = random.below(8);
    std::vector<Bdd> bdds;
    std::vector<Table> tables;
    for (std::size_t i = 0; i < width; ++i) {
      const Function f = random_function(random);
      bdds.push_back(f.bdd);
      tables.push_back(f.table);
    }
    toolkit::Cover cover(width, false);
    for (std::uint32_t n = random.below(12); n > 0; --n) {
      toolkit::Cube cube(width);
      for (std::size_t i = 0; i < width; ++i)
        cube.set(i, static_cast<toolkit::Ternary>(random.below(3)));
      cover.add(cube);
    }
    ASSERT_EQ(table_of(bdd_of(cover, bdds)), cover_table(cover, tables));
  });
  EXPECT_TRUE(bdd_of(toolkit::Cover(0, true), {}).is_true());
  EXPECT_TRUE(bdd_of(toolkit::Cover(0, false), {}).is_false());
}

TEST(BDDCover, TextTellsWhatIsSpecified) {
  const Bdd a = bdd_variable(0), b = bdd_variable(1), c = bdd_variable(2);
  EXPECT_EQ(to_string(BDDCover((a | b) & c)), "BDDCover{x2 (x0 + x1)}");
  EXPECT_EQ(to_string(BDDCover(Bdd(true))), "BDDCover{1}");
  EXPECT_EQ(to_string(BDDCover::two_valued(a & b, ~a)), "BDDCover{ON: x0 x1, OFF: x0'}");
  const std::vector<std::string> names = {"req", "ack", "done"};
  EXPECT_EQ(to_string(BDDCover(a & ~b, a & c, ~a, ~a & b & c), names),
            "BDDCover{ER+: req ack', QR+: req done, ER-: req', QR-: req' ack done}");
}

TEST(BDDCover, SubstitutionAndSupportConcernAllFourSets) {
  const Bdd a = bdd_variable(0), b = bdd_variable(1), c = bdd_variable(2), d = bdd_variable(3);
  const BDDCover cover(a, c, ~d & a, Bdd(false));
  EXPECT_EQ(cover.support(), (std::vector<std::uint32_t>{0, 2, 3}));
  EXPECT_EQ(compose(cover, std::vector<Bdd>{b, a, ~d, c}), BDDCover(b, ~d, ~c & b, Bdd(false)));
}

}  // namespace
}  // namespace vorel::bdd
