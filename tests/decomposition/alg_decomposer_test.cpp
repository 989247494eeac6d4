#include "decomposition/alg_decomposer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "bdd/cover_bdd.h"
#include "oracle/truth_tables.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd, bdd::bdd_variable;

constexpr std::uint32_t placeholder = oracle::table_variables;

// Sets of literals, and of these: division as polynomials by definition.
using Product = std::set<std::pair<std::uint32_t, bool>>;
using Sum = std::set<Product>;

Sum sum_of(const Bdd& f) {
  const bdd::SupportCover form = bdd::cover_of(f);
  Sum sum;
  for (const toolkit::Cube& cube : form.cover) {
    Product product;
    for (std::size_t i = 0; i < cube.size(); ++i)
      if (cube[i] != toolkit::Ternary::dash)
        product.emplace(form.support[i], cube[i] == toolkit::Ternary::one);
    sum.insert(product);
  }
  return sum;
}

Bdd value_of(const Sum& sum) {
  Bdd f(false);
  for (const Product& product : sum) {
    Bdd term(true);
    for (const auto& [v, value] : product) term &= value ? bdd_variable(v) : ~bdd_variable(v);
    f |= term;
  }
  return f;
}

template <class Set>
Set common(const Set& a, const Set& b) {
  Set result;
  std::ranges::set_intersection(a, b, std::inserter(result, result.end()));
  return result;
}
template <class Set>
Set without(const Set& a, const Set& b) {
  Set result;
  std::ranges::set_difference(a, b, std::inserter(result, result.end()));
  return result;
}

Sum divided_by_product(const Sum& sum, const Product& product) {
  Sum quotient;
  for (const Product& term : sum)
    if (std::ranges::includes(term, product)) quotient.insert(without(term, product));
  return quotient;
}

// Quotient and remainder.
std::pair<Sum, Sum> divided(const Sum& sum, const Sum& divisor) {
  Sum quotient = divided_by_product(sum, *divisor.begin()), product;
  for (const Product& d : divisor) quotient = common(quotient, divided_by_product(sum, d));
  for (const Product& d : divisor) {
    for (const Product& q : quotient) {
      Product term = q;
      term.insert(d.begin(), d.end());
      product.insert(term);
    }
  }
  return {quotient, without(sum, product)};
}

// Co-kernels, which are what any two or more terms have in common.
std::set<Product> co_kernels_of(const Sum& sum) {
  std::set<Product> cubes;
  for (const Product& term : sum) {
    const std::set<Product> before = cubes;
    for (const Product& cube : before) cubes.insert(common(cube, term));
    for (const Product& other : sum)
      if (other != term) cubes.insert(common(other, term));
  }
  return cubes;
}

struct Less {
  bool operator()(const AlgDecomposition& a, const AlgDecomposition& b) const {
    if (a.kind != b.kind) return a.kind < b.kind;
    return a.first == b.first ? a.second < b.second : a.first < b.first;
  }
};
using Decompositions = std::set<AlgDecomposition, Less>;

// The table of what follows from a division, row by row; divisors in any order.
class Reference {
 public:
  explicit Reference(const Bdd& f) : f_{f}, root_{sum_of(f)} {}

  Decompositions run(oracle::Random& random) {
    for (const Product& term : root_) open_.push_back({term});
    if (root_.size() == 1) {
      open_.clear();
      for (const auto& literal : *root_.begin()) open_.push_back({{literal}});
    }
    for (const Product& cube : co_kernels_of(root_)) {
      open(divided_by_product(root_, cube));
      open({cube});
    }
    while (!open_.empty()) {
      std::swap(open_[random.below(open_.size())], open_.back());
      const Sum divisor = open_.back();
      open_.pop_back();
      if (divisor != root_ && done_.insert(divisor).second) divide_by(divisor);
    }
    return found_;
  }
  std::size_t divisors() const { return done_.size(); }

 private:
  void open(const Sum& sum) {
    const bool is_constant = sum.empty() || sum.contains({});
    const bool is_literal = sum.size() == 1 && sum.begin()->size() == 1;
    if (!is_constant && !is_literal) open_.push_back(sum);
  }

  void divide_by(const Sum& divisor) {
    const Bdd d = value_of(divisor);
    const auto [q1_sum, rest] = divided(root_, divisor);
    const auto [q0_sum, r_sum] = divided(rest, sum_of(~d));
    for (const Sum& sum : {q1_sum, q0_sum, r_sum}) open(sum);
    for (const Product& cube : co_kernels_of(divisor)) open(divided_by_product(divisor, cube));
    const Bdd q1 = value_of(q1_sum), q0 = value_of(q0_sum), r = value_of(r_sum);
    const Bdd s = bdd_variable(placeholder);
    if (r.is_false() && q0.is_false()) {
      add(AlgKind::conjunction, d, q1);
    } else if (r.is_false() && q1.is_false()) {
      add(AlgKind::conjunction, ~d, q0);
    } else if (r.is_false()) {
      add(AlgKind::disjunction, ~d & q0, d & q1);
      add(AlgKind::collapsed, d, bdd::ite(s, q1, q0));
    } else if (q0.is_false()) {
      add(AlgKind::disjunction, d & q1, r);
      add(AlgKind::collapsed, d, (s & q1) | r);
    } else if (q1.is_false()) {
      add(AlgKind::disjunction, ~d & q0, r);
      add(AlgKind::collapsed, d, (~s & q0) | r);
    } else {
      add(AlgKind::collapsed, d, bdd::ite(s, q1, q0) | r);
      add(AlgKind::disjunction, (d & q1) | (~d & q0), r);
      add(AlgKind::disjunction, (~d & q0) | r, d & q1);
      add(AlgKind::disjunction, (d & q1) | r, ~d & q0);
    }
  }

  void add(AlgKind kind, Bdd a, Bdd b) {
    const auto is_trivial = [this](const Bdd& g) { return g.is_constant() || g == f_; };
    if (kind == AlgKind::collapsed) {
      const bool has_placeholder = std::ranges::binary_search(b.support(), placeholder);
      if (is_trivial(a) || a.support().size() == 1 || !has_placeholder) return;
    } else {
      if (is_trivial(a) || is_trivial(b) || a == b) return;
      if (b < a) swap(a, b);
    }
    found_.insert({kind, a, b});
  }

  const Bdd f_;
  const Sum root_;
  std::vector<Sum> open_;
  std::set<Sum> done_;
  Decompositions found_;
};

TEST(AlgDecomposer, FindsWhatDivisionsLeadToInWhateverOrderTheyAreMade) {
  std::size_t compared = 0;
  const auto [first, end] = support::seeds(100);
  for (std::uint64_t seed = first; seed != end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    oracle::Random random(seed);
    const std::uint32_t variables = 1u << random.between(3, 6);
    const Bdd f = oracle::random_function(random, variables - 1, 5).bdd;
    Reference reference(f);
    const Decompositions expected = reference.run(random);
    if (reference.divisors() >= AlgDecomposer::limit) continue;
    const auto list = AlgDecomposer(placeholder).decompose(f);
    const Decompositions own(list.begin(), list.end());
    ASSERT_EQ(own.size(), list.size()) << "one is there twice";
    EXPECT_TRUE(own == expected) << own.size() << " instead of " << expected.size();
    for (const AlgDecomposition& decomposition : list)
      EXPECT_EQ(composed(decomposition, placeholder), f) << to_string(decomposition);
    compared += list.size();
  }
  EXPECT_GT(compared, 5 * (end - first));
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
  // The product of so many sums has very many kernels, its complement very many cubes.
  Bdd product(true);
  for (std::uint32_t v = 0; v < 20; v += 2) product &= bdd_variable(v) | bdd_variable(v + 1);
  for (const Bdd& f : {product, ~product})
    for (const auto& one : AlgDecomposer(20).decompose(f)) EXPECT_EQ(composed(one, 20), f);
}

}  // namespace
}  // namespace vorel::decomposition
