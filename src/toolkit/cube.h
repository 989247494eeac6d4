// toolkit/cube.h - a product of literals over numbered variables, two bits a position.
// Here:      storage, text form, total order, hash.
// Not here:  sums of products (toolkit/cover.h), the form that algorithms compute on
//            (toolkit/packed_cover.h).
// Invariant: there are words for size() positions and no more, the bits at and above position
// size() are zero, and no position has both of its bits set. check() asserts it.
#pragma once

#include <cassert>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vorel::toolkit {

// How a cube mentions a variable: negated, plainly, or not at all.
enum class Ternary : std::uint8_t { zero = 0, one = 1, dash = 2 };

class Cube {
 public:
  static constexpr std::size_t positions_per_word = 16;

  Cube() = default;
  explicit Cube(std::size_t size, Ternary value = Ternary::zero);
  // One of "0", "1" and "-" for each position.
  static Cube from_text(std::string_view text);

  std::size_t size() const { return size_; }
  Ternary operator[](std::size_t position) const {
    assert(position < size_);
    const std::uint32_t field = words_[position / positions_per_word] >> shift(position);
    if ((field & dash_bit) != 0) return Ternary::dash;
    return (field & one_bit) != 0 ? Ternary::one : Ternary::zero;
  }
  void set(std::size_t position, Ternary value) {
    assert(position < size_);
    std::uint32_t& word = words_[position / positions_per_word];
    word = (word & ~(3u << shift(position))) | (field_of(value) << shift(position));
  }
  void check() const;

  // Number of positions that are not dashes.
  std::size_t literal_count() const;

  // Position i in bits 2i (set: a dash) and 2i+1 (set: 1), counted through the words.
  std::span<const std::uint32_t> words() const { return words_; }
  std::span<std::uint32_t> words() { return words_; }

  // By size, then position by position from the first, where 0 < 1 < dash.
  std::strong_ordering operator<=>(const Cube& other) const;
  bool operator==(const Cube& other) const = default;

 private:
  static constexpr std::uint32_t dash_bit = 1, one_bit = 2;
  static constexpr std::size_t shift(std::size_t position) {
    return position % positions_per_word * 2;
  }
  static constexpr std::uint32_t field_of(Ternary value) {
    return value == Ternary::dash ? dash_bit : value == Ternary::one ? one_bit : 0u;
  }

  std::size_t size_ = 0;
  std::vector<std::uint32_t> words_;
};

// "1-0": one character a position.
std::string to_string(const Cube& cube);

std::uint32_t hash_of(const Cube& cube);

}  // namespace vorel::toolkit

template <>
struct std::hash<vorel::toolkit::Cube> {
  std::size_t operator()(const vorel::toolkit::Cube& cube) const {
    return vorel::toolkit::hash_of(cube);
  }
};
