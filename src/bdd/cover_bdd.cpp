#include "bdd/cover_bdd.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "base/memory_overflow.h"
#include "bdd/bdd_manager.h"
#include "bdd/cudd_interface.h"
#include "bdd/irredundant_sum.h"
#include "toolkit/complement.h"
#include "toolkit/factor.h"
#include "toolkit/minimise.h"

namespace vorel::bdd {
namespace {

// Pairs are joined and queue up behind the others, so that operands are of like size.
Bdd sum_of(std::vector<Bdd> terms) {
  if (terms.empty()) return Bdd(false);
  for (std::size_t i = 0; i + 1 < terms.size(); i += 2) {
    const Bdd left = std::move(terms[i]), right = std::move(terms[i + 1]);
    terms.push_back(left | right);
  }
  return std::move(terms.back());
}

// `values` says 0, 1 or 2, which is free, for every variable of the manager.
toolkit::Cube restrict_to(const std::vector<std::uint32_t>& support, const int* values) {
  toolkit::Cube cube(support.size());
  for (std::size_t i = 0; i < support.size(); ++i)
    cube.set(i, static_cast<toolkit::Ternary>(values[support[i]]));
  return cube;
}

// One cube for each path to true: no two share a point.
toolkit::Cover paths_of(const Bdd& f, const std::vector<std::uint32_t>& support) {
  const BddManager& manager = BddManager::instance();
  toolkit::Cover cover(support.size(), false);
  int* values = nullptr;
  double constant = 0;  // only diagrams with other constants than true need it
  // A generator of nothing is made for false too, so a null one is a failure.
  DdGen* const generator = Cudd_FirstCube(manager.cudd(), f.node(), &values, &constant);
  if (generator == nullptr) manager.fail();
  while (Cudd_IsGenEmpty(generator) == 0) {
    cover.add(restrict_to(support, values));
    Cudd_NextCube(generator, &values, &constant);
  }
  Cudd_GenFree(generator);
  return cover;
}

// The paths offer more primes to choose from than an irredundant sum, and so end in fewer literals.
// But there may be exponentially many, and the time of minimising grows faster than their number.
toolkit::Cover unminimised_cover(const Bdd& f, const std::vector<std::uint32_t>& support) {
  constexpr double most_paths = 1000;
  const double paths = Cudd_CountPathsToNonZero(f.node());
  if (paths < 0) base::memory_overflow();
  return paths <= most_paths ? paths_of(f, support) : irredundant_sum(f, support);
}

std::vector<std::string> names_of(const std::vector<std::uint32_t>& support,
                                  std::span<const std::string> names) {
  std::vector<std::string> chosen;
  for (const std::uint32_t index : support) {
    assert(names.empty() || index < names.size());
    chosen.push_back(names.empty() ? "x" + std::to_string(index) : names[index]);
  }
  return chosen;
}

}  // namespace

Bdd bdd_of(const toolkit::Cube& cube, std::span<const Bdd> variables) {
  assert(cube.size() <= variables.size());
  Bdd product(true);
  for (std::size_t i = cube.size(); i-- > 0;) {
    if (cube[i] == toolkit::Ternary::dash) continue;
    product = (cube[i] == toolkit::Ternary::one ? variables[i] : ~variables[i]) & product;
  }
  return product;
}

Bdd bdd_of(const toolkit::Cover& cover, std::span<const Bdd> variables) {
  std::vector<Bdd> products;
  products.reserve(2 * cover.size());
  for (const toolkit::Cube& cube : cover) products.push_back(bdd_of(cube, variables));
  return sum_of(std::move(products));
}

Bdd bdd_of(const toolkit::LogicExpr& expression, std::span<const std::string> names) {
  using Expr = toolkit::LogicExpr;
  if (const auto* constant = std::get_if<Expr::Const>(&expression.node))
    return Bdd(constant->value);
  if (const auto* literal = std::get_if<Expr::Literal>(&expression.node)) {
    const auto found = std::ranges::find(names, literal->name);
    assert(found != names.end());
    const Bdd variable = bdd_variable(static_cast<std::uint32_t>(found - names.begin()));
    return literal->negated ? ~variable : variable;
  }
  const auto* conjunction = std::get_if<Expr::And>(&expression.node);
  Bdd result(conjunction != nullptr);
  for (const Expr& operand : conjunction != nullptr
                                 ? conjunction->operands
                                 : std::get<Expr::Or>(expression.node).operands) {
    if (conjunction != nullptr) {
      result &= bdd_of(operand, names);
    } else {
      result |= bdd_of(operand, names);
    }
  }
  return result;
}

SupportCover cover_of(const Bdd& f) {
  std::vector<std::uint32_t> support = f.support();
  const toolkit::Cover on = unminimised_cover(f, support);
  toolkit::Cover minimised = toolkit::minimise(on, toolkit::complement(on));
  return {std::move(minimised), std::move(support)};
}

toolkit::LogicExpr expression_of(const Bdd& f, std::span<const std::string> names) {
  const SupportCover form = cover_of(f);
  return toolkit::factor(form.cover, names_of(form.support, names));
}

std::size_t literal_count(const Bdd& f) { return toolkit::literal_count(expression_of(f)); }

}  // namespace vorel::bdd
