#include "toolkit/algebra.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "support/seeds.h"
#include "toolkit/toolkit_testing.h"

namespace vorel::toolkit {
namespace {

// A cube as the set of its literals: twice the position, plus the value.
using Product = std::set<std::size_t>;
using Sum = std::set<Product>;

Product product_of(const Cube& cube) {
  Product product;
  for (std::size_t i = 0; i < cube.size(); ++i)
    if (cube[i] != Ternary::dash) product.insert(2 * i + (cube[i] == Ternary::one ? 1 : 0));
  return product;
}

Sum sum_of(const Cover& cover) {
  Sum sum;
  for (const Cube& cube : cover) sum.insert(product_of(cube));
  return sum;
}

std::set<std::size_t> support_of(const Sum& sum) {
  std::set<std::size_t> support;
  for (const Product& product : sum)
    for (const std::size_t literal : product) support.insert(literal / 2);
  return support;
}

Product joined(const Product& a, const Product& b) {
  Product both = a;
  both.insert(b.begin(), b.end());
  return both;
}

// Few variables, so that cubes share literals.
Cover small_cover(RandomCovers& random, std::size_t width) {
  return random.cover(width, random.below(9), 40 + random.below(30));
}

// The definition: the largest set of cubes without a variable of the divisor whose products with
// it are all in the dividend.
Sum quotient_by_definition(const Sum& dividend, const Sum& divisor) {
  const auto support = support_of(divisor);
  Sum quotient;
  for (const Product& whole : dividend) {
    Product rest;
    for (const std::size_t literal : whole)
      if (!support.contains(literal / 2)) rest.insert(literal);
    bool divides = !divisor.empty();
    for (const Product& d : divisor) divides = divides && dividend.contains(joined(rest, d));
    if (divides) quotient.insert(rest);
  }
  return quotient;
}

TEST(Division, FollowsItsDefinition) {
  std::size_t divided = 0;
  const std::uint64_t tried = support::for_each_seed(3000, [&](std::uint64_t seed) {
    RandomCovers random(seed);
    const std::size_t width = 1 + random.below(6);
    const Cover divisor = random.cover(width, random.below(3), 70);
    Cover dividend = small_cover(random, width);
    for (const Cube& cube : Cover(dividend)) {  // make divisors happen
      for (const Cube& d : divisor) {
        Cube product = cube;
        for (std::size_t i = 0; i < width; ++i)
          if (d[i] != Ternary::dash) product.set(i, d[i]);
        dividend.add(product);
      }
    }
    const Division<Cover> division = divide(dividend, divisor);
    const Sum quotient = sum_of(division.quotient), remainder = sum_of(division.remainder);
    ASSERT_EQ(quotient, quotient_by_definition(sum_of(dividend), sum_of(divisor)))
        << to_string(dividend) << "\nby " << to_string(divisor);
    Sum expected = sum_of(dividend);
    for (const Product& q : quotient)
      for (const Product& d : sum_of(divisor)) expected.erase(joined(q, d));
    ASSERT_EQ(remainder, expected);
    divided += quotient.empty() ? 0 : 1;
  });
  EXPECT_GT(divided, tried / 4);
}

// All cubes tried as co-kernels: a quotient of at least two cubes without a common literal.
std::map<Product, Sum> kernels_by_definition(const Sum& sum, std::size_t width) {
  std::map<Product, Sum> kernels;
  for (std::size_t code = 0, end = static_cast<std::size_t>(std::pow(3, width)); code < end;
       ++code) {
    Product cube;
    for (std::size_t i = 0, rest = code; i < width; ++i, rest /= 3)
      if (rest % 3 != 2) cube.insert(2 * i + rest % 3);
    Sum quotient;
    for (const Product& product : sum) {
      if (!std::ranges::includes(product, cube)) continue;
      Product rest;
      std::ranges::set_difference(product, cube, std::inserter(rest, rest.end()));
      quotient.insert(rest);
    }
    if (quotient.size() < 2) continue;
    Product common = *quotient.begin();
    for (const Product& product : quotient)
      std::erase_if(common, [&](std::size_t literal) { return !product.contains(literal); });
    if (common.empty()) kernels[cube] = quotient;
  }
  return kernels;
}

TEST(Kernels, AreThoseOfTheDefinitionEachCoKernelOnce) {
  support::for_each_seed(600, [&](std::uint64_t seed) {
    RandomCovers random(seed);
    const std::size_t width = 1 + random.below(6);
    PackedCover rows(small_cover(random, width));
    remove_contained(rows);
    const Cover cover = rows.unpacked();
    std::map<Product, Sum> found;
    for_each_kernel(cover, [&](const Cover& kernel, const Cube& co_kernel) {
      EXPECT_TRUE(found.emplace(product_of(co_kernel), sum_of(kernel)).second);
      return true;
    });
    ASSERT_EQ(found, kernels_by_definition(sum_of(cover), width)) << to_string(cover);
  });
}

}  // namespace
}  // namespace vorel::toolkit
