#include "decomposition/alg_decomposer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "oracle/truth_tables.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd, bdd::bdd_variable;

constexpr std::uint32_t placeholder = oracle::table_variables;

TEST(AlgDecomposer, CandidatesComposeToTheFunctionAndSaySomethingNew) {
  std::size_t found = 0;
  const auto [first, end] = support::seeds(100);
  for (std::uint64_t seed = first; seed != end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    oracle::Random random(seed);
    const std::uint32_t variables = 1u << random.between(3, 6);
    const Bdd f = oracle::random_function(random, variables - 1, 5).bdd;
    const auto list = AlgDecomposer(placeholder).decompose(f);
    for (const AlgDecomposition& one : list) {
      SCOPED_TRACE(to_string(one));
      EXPECT_EQ(composed(one, placeholder), f);
      EXPECT_EQ(std::ranges::count(list, one), 1);
      EXPECT_FALSE(one.first.is_constant() || one.first == f || one.first == one.second);
      if (one.kind == AlgKind::collapsed) {
        EXPECT_TRUE(std::ranges::binary_search(one.second.support(), placeholder));
      } else {
        EXPECT_FALSE(one.second.is_constant() || one.second == f);
      }
    }
    found += list.size();
  }
  EXPECT_GT(found, 5 * (end - first));
}

TEST(AlgDecomposer, KnownFunctionsHaveTheirTextbookFormsAndLargeOnesSome) {
  const std::vector<std::string> names = {"a", "b", "c", "d", "e", "$1"};
  const Bdd a = bdd_variable(0), b = bdd_variable(1), c = bdd_variable(2), d = bdd_variable(3),
            e = bdd_variable(4);
  const struct {
    Bdd function;
    std::set<std::string> expected;
  } rows[] = {
      {Bdd(true), {}},
      {~c, {}},
      {a & b, {"AND(a, b)"}},
      {a | ~b, {"OR(a, b')"}},
      {a & (b | c),
       {"AND(a, b + c)", "OR(a b, a c)", "COLLAPSED($1=a b in a c + $1)",
        "COLLAPSED($1=a c in a b + $1)"}},
      {(a & b) | (~a & ~b),
       {"OR(a b, a' b')", "COLLAPSED($1=a b in a' b' + $1)", "COLLAPSED($1=a' b' in a b + $1)"}},
  };
  for (const auto& row : rows) {
    std::set<std::string> texts;
    for (const auto& found : AlgDecomposer(5, names).decompose(row.function))
      texts.insert(to_string(found, names));
    EXPECT_EQ(texts, row.expected);
  }
  // The complement of a divisor is one, too; each of three parts can stand against the others.
  const Bdd either = a | b, with = either & c, without_either = ~either & d;
  const auto found = AlgDecomposer(5).decompose(with | without_either | e);
  const auto is_found = [&](AlgKind kind, Bdd first, Bdd second) {
    if (kind != AlgKind::collapsed && second < first) swap(first, second);
    return std::ranges::count(found, AlgDecomposition{kind, first, second}) == 1;
  };
  EXPECT_TRUE(is_found(AlgKind::collapsed, either, bdd::ite(bdd_variable(5), c, d) | e));
  EXPECT_TRUE(is_found(AlgKind::disjunction, with | without_either, e));
  EXPECT_TRUE(is_found(AlgKind::disjunction, with | e, without_either));
  EXPECT_TRUE(is_found(AlgKind::disjunction, without_either | e, with));
  EXPECT_EQ(found.size(), 13u);
  // The product of so many sums has very many kernels, its complement very many cubes.
  Bdd product(true);
  for (std::uint32_t v = 0; v < 20; v += 2) product &= bdd_variable(v) | bdd_variable(v + 1);
  for (const Bdd& f : {product, ~product})
    for (const auto& one : AlgDecomposer(20).decompose(f)) EXPECT_EQ(composed(one, 20), f);
}

}  // namespace
}  // namespace vorel::decomposition
