// base/hashing.h - hashing sequences of numbers.
#pragma once

#include <cstdint>

namespace vorel::base {

// The hash of a sequence whose beginning hashes to `hash` and that goes on with `value`.
inline std::uint64_t combine_hash(std::uint64_t hash, std::uint64_t value) {
  hash = (hash ^ value) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 32);
}

}  // namespace vorel::base
