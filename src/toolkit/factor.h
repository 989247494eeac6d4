// toolkit/factor.h - from a sum of products to a factored expression with few literals.
// Here:      algebraic factoring by kernels [BM-1982], with a bounded search among divisors.
// Not here:  division and kernels (toolkit/algebra.h), the expression (toolkit/logic_expr.h).
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "toolkit/cover.h"
#include "toolkit/logic_expr.h"

namespace vorel::toolkit {

struct FactorParams {
  // Other ways to divide than the most promising one are tried out until the covers so divided have
  // this many cubes together.
  std::uint32_t max_tried_cubes = 300;
  // Covers with more cubes are divided by literals until their parts have no more than this.
  std::uint32_t max_cubes_for_kernels = 100;
};

// Position i is called names[i], or without names "x" and i. Of the cover, or if `inverted` of its
// complement, which has the same shape with conjunctions and disjunctions exchanged. Never more
// literals than the cover.
LogicExpr factor(const Cover& cover, std::span<const std::string> names = {}, bool inverted = false,
                 const FactorParams& params = {});

}  // namespace vorel::toolkit
