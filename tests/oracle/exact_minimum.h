// tests/oracle/exact_minimum.h - the smallest covers there are, by trying everything.
// Functions of at most 6 variables as truth tables in one word, all primes, branch and bound.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "toolkit/cover.h"

namespace vorel::oracle {

struct CoverCost {
  std::size_t cubes = 0, literals = 0;
};

class ExactMinimum {
 public:
  // Bit p of the tables is the value at point p.
  ExactMinimum(std::size_t width, std::uint64_t on, std::uint64_t off) : on_{on} {
    find_primes(width, off);
    search(0, 0);
  }

  // The fewest cubes, and the fewest literals with so many.
  CoverCost cost() const { return {best_ / cube_weight, best_ % cube_weight}; }

 private:
  struct Prime {
    std::uint64_t points;
    std::size_t weight;
  };
  static constexpr std::size_t cube_weight = 1000;

  static std::uint64_t points_of(std::size_t width, std::size_t fixed, std::size_t values) {
    std::uint64_t points = 0;
    for (std::size_t p = 0; p < std::size_t{1} << width; ++p)
      if (((p ^ values) & fixed) == 0) points |= std::uint64_t{1} << p;
    return points;
  }

  void find_primes(std::size_t width, std::uint64_t off) {
    for (std::size_t fixed = 0; fixed < std::size_t{1} << width; ++fixed) {
      for (std::size_t values = fixed;; values = (values - 1) & fixed) {
        const std::uint64_t points = points_of(width, fixed, values);
        bool is_prime = (points & off) == 0 && (points & on_) != 0;
        for (std::size_t i = 0; i < width && is_prime; ++i)
          if ((fixed >> i & 1) != 0)
            is_prime = (points_of(width, fixed & ~(std::size_t{1} << i), values) & off) != 0;
        if (is_prime)
          primes_.push_back(
              {points & on_, cube_weight + static_cast<std::size_t>(std::popcount(fixed))});
        if (values == 0) break;
      }
    }
  }

  // What must still be paid for these points: some of them have no prime in common.
  std::size_t lower_bound(std::uint64_t points) const {
    std::size_t bound = 0;
    while (points != 0) {
      const std::uint64_t point = points & (~points + 1);
      std::size_t cheapest = ~std::size_t{0};
      points &= ~point;
      for (const Prime& prime : primes_) {
        if ((prime.points & point) == 0) continue;
        cheapest = std::min(cheapest, prime.weight);
        points &= ~prime.points;
      }
      bound += cheapest;
    }
    return bound;
  }

  void search(std::uint64_t covered, std::size_t weight) {
    const std::uint64_t open = on_ & ~covered;
    if (open == 0) best_ = std::min(best_, weight);
    if (open == 0 || weight + lower_bound(open) >= best_) return;
    std::uint64_t rarest = 0;
    std::size_t fewest = ~std::size_t{0};
    for (std::uint64_t rest = open; rest != 0; rest &= rest - 1) {
      const std::uint64_t point = rest & (~rest + 1);
      std::size_t count = 0;
      for (const Prime& prime : primes_) count += (prime.points & point) != 0 ? 1 : 0;
      if (count < fewest) rarest = point;
      fewest = std::min(fewest, count);
    }
    std::vector<Prime> ways;
    for (const Prime& prime : primes_)
      if ((prime.points & rarest) != 0) ways.push_back(prime);
    std::ranges::stable_sort(ways, [&](const Prime& a, const Prime& b) {
      return std::popcount(a.points & open) > std::popcount(b.points & open);
    });
    for (const Prime& way : ways) search(covered | way.points, weight + way.weight);
  }

  std::uint64_t on_;
  std::vector<Prime> primes_;
  std::size_t best_ = ~std::size_t{0};
};

}  // namespace vorel::oracle
