#include "base/shared_arrays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace vorel::base {
namespace {

using Plain = std::vector<std::uint32_t>;

std::uint32_t larger(std::uint32_t, std::uint32_t a, std::uint32_t b) { return std::max(a, b); }

Plain contents(const SharedArrays& arrays, SharedArrays::Array array) {
  Plain result(arrays.length());
  for (std::uint32_t i = 0; i < arrays.length(); ++i) result[i] = arrays.at(array, i);
  return result;
}

// Each array is made of some that there are, with a few numbers changed.
TEST(SharedArrays, AgreeWithPlainOnesHoweverTheyShare) {
  std::mt19937 random(1);
  for (const std::uint32_t length : {1u, 7u, 16u, 17u, 300u, 5000u}) {
    SharedArrays arrays(length);
    std::vector<SharedArrays::Array> shared{SharedArrays::zeros};
    std::vector<Plain> plain{Plain(length)};
    for (int round = 0; round < 60; ++round) {
      const std::uint32_t own = arrays.node_count();
      std::vector<SharedArrays::Array> merging;
      Plain expected(length);
      for (auto parts = random() % 4; parts > 0; --parts) {
        const auto part = random() % shared.size();
        merging.push_back(shared[part]);
        std::ranges::transform(expected, plain[part], expected.begin(),
                               [](auto a, auto b) { return std::max(a, b); });
      }
      SharedArrays::Array array = arrays.merge(merging, own, larger);
      for (auto changes = random() % 4; changes > 0; --changes) {
        const auto position = static_cast<std::uint32_t>(random() % length);
        arrays.set(array, position,
                   expected[position] = static_cast<std::uint32_t>(1 + random() % 9), own);
      }
      shared.push_back(array);
      plain.push_back(std::move(expected));
    }
    SharedArrays moved(length);
    SharedArrayMover mover(arrays, moved);
    for (std::size_t i = 0; i < shared.size(); ++i) {
      EXPECT_EQ(contents(arrays, shared[i]), plain[i]) << "changed by another one";
      EXPECT_EQ(contents(moved, mover.move(shared[i])), plain[i]);
    }
    EXPECT_LE(moved.node_count(), arrays.node_count());

    const auto end = static_cast<std::uint32_t>(random() % (length + 1));
    for (std::size_t i = 1; i < shared.size(); ++i) {
      Plain seen, differing, larger_seen, larger_expected;
      arrays.agree(shared[i - 1], shared[i], end, [&](auto position, auto a, auto b) {
        EXPECT_EQ(std::pair(a, b), std::pair(plain[i - 1][position], plain[i][position]));
        seen.push_back(position);
        return true;
      });
      std::vector<SharedArrays::Array> others{shared[i], shared[i / 2]};
      arrays.visit_larger(shared[i - 1], others, [&](auto own, auto largest) {
        larger_seen.insert(larger_seen.end(), {own, largest});
      });
      for (std::uint32_t k = 0; k < length; ++k) {
        const std::uint32_t a = plain[i - 1][k], b = plain[i][k];
        if (k < end && a != b && a != 0 && b != 0) differing.push_back(k);
        const std::uint32_t largest = std::max({a, b, plain[i / 2][k]});
        if (largest != a) larger_expected.insert(larger_expected.end(), {a, largest});
      }
      EXPECT_EQ(seen, differing);
      EXPECT_EQ(larger_seen, larger_expected);
    }
  }
}

}  // namespace
}  // namespace vorel::base
