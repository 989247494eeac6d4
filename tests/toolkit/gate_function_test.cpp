#include "toolkit/gate_function.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "support/seeds.h"

namespace vorel::toolkit {
namespace {

using Order = std::vector<std::uint32_t>;

// The table of the function whose pin i is pin order[i] of the other.
TruthTable reordered(const TruthTable& table, const Order& order) {
  TruthTable result(table.size());
  for (std::size_t point = 0; point < 64 * table.size(); ++point) {
    std::size_t source = 0;
    for (std::size_t i = 0; i < order.size(); ++i) source |= ((point >> i) % 2) << order[i];
    if ((table[source / 64] >> (source % 64)) % 2 == 1) {
      result[point / 64] |= std::uint64_t{1} << (point % 64);
    }
  }
  return result;
}

Order first_order(std::uint32_t pin_count) {
  Order order(pin_count);
  std::iota(order.begin(), order.end(), 0u);
  return order;
}

bool equal_in_some_order(const TruthTable& a, const TruthTable& b, std::uint32_t pin_count) {
  Order order = first_order(pin_count);
  do {
    if (reordered(a, order) == b) return true;
  } while (std::ranges::next_permutation(order).found);
  return false;
}

// Sums of few products, many of which have symmetric pins.
TruthTable random_table(std::mt19937_64& random, std::uint32_t pin_count) {
  GateFunction function{{{GateOperator::constant_0}}};
  for (std::size_t product = 0; product < 1 + random() % 3; ++product) {
    function.steps.push_back({GateOperator::constant_1});
    for (std::uint32_t pin = 0; pin < pin_count; ++pin) {
      if (random() % 2 == 0) continue;
      function.steps.push_back({GateOperator::pin, pin});
      if (random() % 2 == 0) function.steps.push_back({GateOperator::negation});
      function.steps.push_back({GateOperator::conjunction});
    }
    function.steps.push_back(
        {random() % 4 == 0 ? GateOperator::exclusive_or : GateOperator::disjunction});
  }
  return truth_table(function, pin_count);
}

TEST(GateFunction, EqualityUpToPinOrderIsThatOfAllOrders) {
  support::for_each_seed(100, [&](std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const auto pin_count = static_cast<std::uint32_t>(random() % 6);
    std::vector<TruthTable> tables;
    for (int i = 0; i < 2; ++i) {
      tables.push_back(random_table(random, pin_count));
      Order order = first_order(pin_count);
      std::shuffle(order.begin(), order.end(), random);
      tables.push_back(reordered(tables.back(), order));
    }
    for (const TruthTable& a : tables) {
      for (const TruthTable& b : tables) {
        ASSERT_EQ(equal_up_to_pin_order(a, b, pin_count), equal_in_some_order(a, b, pin_count));
      }
    }
  });
}

}  // namespace
}  // namespace vorel::toolkit
