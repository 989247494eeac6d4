// oracle/random.h - random numbers that are the same on every machine.
// The standard fixes the engine but not its distributions, so ranges are reduced here.
#pragma once

#include <cassert>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace vorel::oracle {

class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_{seed} {}

  std::uint32_t below(std::size_t bound) {
    assert(bound > 0);
    return static_cast<std::uint32_t>(engine_() % bound);
  }
  std::uint32_t between(std::uint32_t low, std::uint32_t high) {
    return low + below(high - low + 1);
  }
  bool chance(std::uint32_t percent) { return below(100) < percent; }

  template <class T>
  void shuffle(std::vector<T>& items) {
    for (std::size_t i = items.size(); i > 1; --i) std::swap(items[i - 1], items[below(i)]);
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace vorel::oracle
