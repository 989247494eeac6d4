#include "toolkit/factor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "support/logic_values.h"
#include "support/seeds.h"
#include "toolkit/minimise.h"
#include "toolkit/toolkit_testing.h"

namespace vorel::toolkit {
namespace {

const std::vector<std::string> letters = {"a", "b", "c", "d", "e", "f", "g"};

// "ab' + c" over the letters a to g.
Cover sum_of_products(const std::string& text) {
  Cover cover(letters.size(), false);
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word == "+") continue;
    Cube cube(letters.size(), Ternary::dash);
    for (std::size_t i = 0; i < word.size(); ++i) {
      if (word[i] == '\'') continue;
      const bool negated = i + 1 < word.size() && word[i + 1] == '\'';
      cube.set(static_cast<std::size_t>(word[i] - 'a'), negated ? Ternary::zero : Ternary::one);
    }
    cover.add(cube);
  }
  return cover;
}

// Under the names x0, x1, ...
bool value_of(const LogicExpr& e, std::uint32_t point) {
  return support::value_of(
      e, [&](const std::string& name) { return (point >> std::stoul(name.substr(1)) & 1) != 0; });
}

// No operand is of its parent's kind, a constant, or alone.
bool is_tidy(const LogicExpr& e) {
  const auto tidy = [](const auto& operands, auto is_same_kind) {
    return operands.size() > 1 && std::ranges::all_of(operands, [&](const LogicExpr& operand) {
             return !is_same_kind(operand) && !operand.is_const() && is_tidy(operand);
           });
  };
  const auto is_and = [](const LogicExpr& x) {
    return std::holds_alternative<LogicExpr::And>(x.node);
  };
  const auto is_or = [](const LogicExpr& x) {
    return std::holds_alternative<LogicExpr::Or>(x.node);
  };
  if (is_and(e)) return tidy(std::get<LogicExpr::And>(e.node).operands, is_and);
  if (is_or(e)) return tidy(std::get<LogicExpr::Or>(e.node).operands, is_or);
  return true;
}

TEST(Factor, KeepsTheFunctionAndNeverAddsLiterals) {
  support::for_each_seed(1500, [&](std::uint64_t seed) {
    RandomCovers random(seed);
    const std::size_t width = random.below(seed % 30 == 0 ? 11 : 7);
    Cover cover = random.cover(width, random.below(20), 20 + random.below(70));
    if (seed % 3 == 0) {
      const auto [on, off] = random.points(width, 40, 40);
      cover = minimise(on, off);
    }
    FactorParams params;
    if (seed % 5 == 0) params = {.max_tried_cubes = 0, .max_cubes_for_kernels = 4};
    const LogicExpr plain = factor(cover, {}, false, params);
    const LogicExpr inverted = factor(cover, {}, true, params);
    const TruthTable table = table_of(cover);
    for (std::uint32_t p = 0; p < table.size(); ++p) {
      ASSERT_EQ(value_of(plain, p), table[p]) << to_string(cover) << '\n' << to_string(plain);
      ASSERT_EQ(value_of(inverted, p), !table[p]) << to_string(cover) << '\n'
                                                  << to_string(inverted);
    }
    ASSERT_LE(literal_count(plain), cover.literal_count());
    ASSERT_TRUE(is_tidy(plain)) << to_string(plain);
    ASSERT_EQ(inverted, negate(plain));
  });
}

// The fewest literals known for each, by algebraic factoring.
TEST(Factor, FindsTheBestFormsOfTextbookFunctions) {
  const struct {
    std::string sum;
    std::size_t literals;
  } table[] = {
      {"ab + ac", 3},
      {"ab + ac + bc", 5},
      {"ac + ad + bc + bd + e", 5},
      {"ace + bce + de + g", 6},
      {"acd + bcd + ae + be + cf", 7},
      {"adf + aef + bdf + bef + cdf + cef + g", 7},
      {"ace + acf + ade + adf + bce + bcf + bde + bdf", 6},
      {"abc' + ab'c + a'bc + a'b'c'", 10},
      {"af + bf + ag + cg + ade + bde + cde", 11},
      {"abg + acg + adf + aef + afg + bd + be + cd + ce", 11},
      {"ab + ac + ad + ae + bc + bd + be + cd + ce + de", 12},
  };
  for (const auto& row : table) {
    const LogicExpr expression = factor(sum_of_products(row.sum), letters);
    EXPECT_EQ(literal_count(expression), row.literals) << row.sum << ": " << to_string(expression);
  }
}

TEST(Factor, ConstantsAndNames) {
  const auto text = [](const Cover& cover, bool inverted) {
    return to_string(factor(cover, letters, inverted));
  };
  EXPECT_EQ(text(Cover(2, false), false), "0");
  EXPECT_EQ(text(Cover(2, false), true), "1");
  EXPECT_EQ(text(Cover(2, true), false), "1");
  EXPECT_EQ(text(Cover::of({"1-", "--"}), true), "0");
  EXPECT_EQ(text(Cover::of({"10-", "11-"}), false), "a (b' + b)");
  EXPECT_EQ(text(Cover::of({"10-", "1-1"}), false), "a (b' + c)");
  EXPECT_EQ(text(Cover::of({"10-", "1-1"}), true), "a' + b c'");
  EXPECT_EQ(to_string(factor(Cover::of({"--0"}))), "x2'");
}

}  // namespace
}  // namespace vorel::toolkit
