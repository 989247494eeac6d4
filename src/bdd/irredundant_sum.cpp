#include "bdd/irredundant_sum.h"

#include <cassert>

#include "bdd/bdd_manager.h"
#include "bdd/cudd_interface.h"

namespace vorel::bdd {
namespace {

class SumBuilder {
 public:
  explicit SumBuilder(std::span<const std::uint32_t> support)
      : support_{support},
        cube_(support.size(), toolkit::Ternary::dash),
        sum_(support.size(), false) {}

  // Adds cubes, all inside the present one, of a function between the bounds; returns the function.
  // It depends on variables from the position on only, as do the bounds.
  Bdd add_between(const Bdd& lower, const Bdd& upper, std::size_t position);
  toolkit::Cover take_sum() && { return std::move(sum_); }

 private:
  Bdd split(const Bdd& lower, const Bdd& upper, std::size_t position);

  std::span<const std::uint32_t> support_;
  toolkit::Cube cube_;
  toolkit::Cover sum_;
};

Bdd SumBuilder::add_between(const Bdd& lower, const Bdd& upper, std::size_t position) {
  if (lower.is_false()) return lower;
  if (upper.is_true()) {
    sum_.add(cube_);
    return upper;
  }
  return split(lower, upper, position);
}

Bdd SumBuilder::split(const Bdd& lower, const Bdd& upper, std::size_t position) {
  assert(position < support_.size());
  const Bdd x = bdd_variable(support_[position]), not_x = ~x;
  const Bdd lower_0 = cofactor(lower, not_x), lower_1 = cofactor(lower, x);
  const Bdd upper_0 = cofactor(upper, not_x), upper_1 = cofactor(upper, x);
  // What the other half does not allow needs the literal; the rest may do without.
  cube_.set(position, toolkit::Ternary::zero);
  const Bdd with_0 = add_between(lower_0 & ~upper_1, upper_0, position + 1);
  cube_.set(position, toolkit::Ternary::one);
  const Bdd with_1 = add_between(lower_1 & ~upper_0, upper_1, position + 1);
  cube_.set(position, toolkit::Ternary::dash);
  const Bdd rest = (lower_0 & ~with_0) | (lower_1 & ~with_1);
  const Bdd without = add_between(rest, upper_0 & upper_1, position + 1);
  return without | ite(x, with_1, with_0);
}

}  // namespace

toolkit::Cover irredundant_sum(const Bdd& f, std::span<const std::uint32_t> support) {
  SumBuilder builder(support);
  [[maybe_unused]] const Bdd sum = builder.add_between(f, f, 0);
  assert(sum == f);
  return std::move(builder).take_sum();
}

Bdd function_between(const Bdd& lower, const Bdd& upper) {
  DdManager* const cudd = BddManager::instance().cudd();
  assert(!lower.is_null() && !upper.is_null());
  assert(Cudd_bddLeq(cudd, lower.node(), upper.node()) != 0);
  return Bdd::from_result(Cudd_bddIsop(cudd, lower.node(), upper.node()));
}

}  // namespace vorel::bdd
