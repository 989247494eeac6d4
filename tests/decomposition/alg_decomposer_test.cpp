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

using bdd::Bdd;

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
    for (const auto& [v, value] : product)
      term &= value ? bdd::bdd_variable(v) : ~bdd::bdd_variable(v);
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

std::pair<Sum, Sum> divided(const Sum& sum, const Sum& divisor) {
  Sum quotient, product;
  for (const Product& d : divisor) {
    const Sum part = divided_by_product(sum, d);
    quotient = d == *divisor.begin() ? part : common(quotient, part);
  }
  for (const Product& d : divisor) {
    for (Product q : quotient) {
      q.insert(d.begin(), d.end());
      product.insert(q);
    }
  }
  return {quotient, without(sum, product)};
}

// Kernels with their co-kernels: by what any rows have in common.
std::vector<std::pair<Sum, Product>> kernels_of(const Sum& sum) {
  std::set<Product> cubes;
  for (const Product& term : sum) {
    const std::set<Product> before = cubes;
    for (const Product& cube : before) cubes.insert(common(cube, term));
    for (const Product& other : sum)
      if (other != term) cubes.insert(common(other, term));
  }
  std::vector<std::pair<Sum, Product>> kernels;
  for (const Product& cube : cubes) kernels.emplace_back(divided_by_product(sum, cube), cube);
  return kernels;
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
    for (const auto& [kernel, co_kernel] : kernels_of(root_)) {
      open(kernel);
      open({co_kernel});
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
    for (const auto& [kernel, co_kernel] : kernels_of(divisor)) open(kernel);
    const Bdd q1 = value_of(q1_sum), q0 = value_of(q0_sum), r = value_of(r_sum);
    const Bdd s = bdd::bdd_variable(placeholder);
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
      const auto support = b.support();
      if (is_trivial(a) || a.support().size() == 1) return;
      if (!std::ranges::binary_search(support, placeholder)) return;
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
  for (auto [seed, end] = support::seeds(150); seed != end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    oracle::Random random(seed);
    const std::uint32_t variables = 1u << random.between(1, 7);
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
  EXPECT_GT(compared, 10 * support::seeds(150).end - 10 * support::seeds(150).first);
}

TEST(AlgDecomposer, KnownFunctionsHaveTheirTextbookForms) {
  const std::vector<std::string> names = {"a", "b", "c", "d", "e", "$1"};
  const Bdd a = bdd::bdd_variable(0), b = bdd::bdd_variable(1), c = bdd::bdd_variable(2),
            d = bdd::bdd_variable(3), e = bdd::bdd_variable(4);
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
  // The complement of a divisor is one, too.
  const Bdd either = a | b;
  const auto found = AlgDecomposer(5, names).decompose((either & c) | (~either & d) | e);
  const auto is_choice = [&](const AlgDecomposition& decomposition) {
    return decomposition.first == either &&
           decomposition.second == (bdd::ite(bdd::bdd_variable(5), c, d) | e);
  };
  EXPECT_TRUE(std::ranges::any_of(found, is_choice));
}

TEST(AlgDecomposer, EndsAtItsLimitOnLargeFunctions) {
  // The product of so many sums has very many kernels, a sum of products a complement of many
  // cubes.
  Bdd product(true), sum(false);
  for (std::uint32_t v = 0; v < 20; v += 2) {
    product &= bdd::bdd_variable(v) | bdd::bdd_variable(v + 1);
    sum |= bdd::bdd_variable(v) & bdd::bdd_variable(v + 1);
  }
  for (const Bdd& f : {product, sum, ~sum}) {
    const auto found = AlgDecomposer(20).decompose(f);
    EXPECT_GT(found.size(), 0u);
    for (const AlgDecomposition& decomposition : found) EXPECT_EQ(composed(decomposition, 20), f);
  }
}

}  // namespace
}  // namespace vorel::decomposition
