// base/hashing.h - hashing sequences of numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <type_traits>

namespace vorel::base {

// The hash of a sequence whose beginning hashes to `hash` and that goes on with `value`.
inline std::uint64_t combine_hash(std::uint64_t hash, std::uint64_t value) {
  hash = (hash ^ value) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 32);
}

// Of a list whose elements have a hash.
struct SequenceHash {
  template <class List>
  std::size_t operator()(const List& list) const {
    std::uint64_t hash = list.size();
    for (const auto& item : list) {
      hash = combine_hash(hash, std::hash<std::remove_cvref_t<decltype(item)>>{}(item));
    }
    return hash;
  }
};

}  // namespace vorel::base
