// tests/support/seeds.h - which random cases a test tries.
// A test has a number of its own; VOREL_SEEDS and VOREL_FIRST_SEED ask for more, or for others.
#pragma once

#include <cstdint>
#include <cstdlib>

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

}  // namespace vorel::support
