// tests/support/seeds.h - which random cases a test tries.
// A test has a number of its own; VOREL_SEEDS and VOREL_FIRST_SEED ask for more, or for others.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace vorel::support {

struct Seeds {
  std::uint64_t first, end;
};

inline Seeds seeds(std::uint64_t usual_count) {
  const auto number = [](const char* name, std::uint64_t preset) {
    const char* const text = std::getenv(name);
    return text == nullptr ? preset : std::strtoull(text, nullptr, 10);
  };
  const std::uint64_t first = number("VOREL_FIRST_SEED", 1);
  return {first, first + number("VOREL_SEEDS", usual_count)};
}

// Calls check(seed) for each until one fails, and gives their number.
template <class Check>
std::uint64_t for_each_seed(std::uint64_t usual_count, Check check) {
  const auto [first, end] = seeds(usual_count);
  for (std::uint64_t seed = first; seed < end && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    check(seed);
  }
  return end - first;
}

}  // namespace vorel::support
