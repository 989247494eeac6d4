// base/value_hash.h - the 32-bit hash of the keys of options and of Boolean functions.
// Here:      FNV-1a over bytes [FNV-1991] and the step that mixes one more value into a hash.
// Not here:  the order in which a type feeds its parts, which stands beside the type.
//
// The values are part of the behaviour: containers keyed by them iterate alike on every machine.
#pragma once

#include <cstdint>
#include <string_view>

namespace vorel::base {

inline constexpr std::uint32_t hash_seed = 12345;

constexpr std::uint32_t fnv1a_step(std::uint32_t hash, std::uint8_t byte) {
  return (hash ^ byte) * 16777619u;
}
inline constexpr std::uint32_t fnv1a_basis = 0x811C9DC5u;

constexpr std::uint32_t fnv1a(std::uint8_t byte) { return fnv1a_step(fnv1a_basis, byte); }

// Over the four bytes of the word, the lowest first.
constexpr std::uint32_t fnv1a(std::uint32_t word) {
  std::uint32_t hash = fnv1a_basis;
  for (int shift = 0; shift < 32; shift += 8)
    hash = fnv1a_step(hash, static_cast<std::uint8_t>(word >> shift));
  return hash;
}

constexpr std::uint32_t fnv1a(std::string_view text) {
  std::uint32_t hash = fnv1a_basis;
  for (const char c : text) hash = fnv1a_step(hash, static_cast<std::uint8_t>(c));
  return hash;
}

constexpr std::uint32_t combine_hashes(std::uint32_t hash, std::uint32_t value) {
  return hash ^ ((hash >> 2) + 0x9E3779B9u + (hash << 6) + value);
}

}  // namespace vorel::base
