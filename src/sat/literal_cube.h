// sat/literal_cube.h - what is known of the values of a list of literals, two bits each.
#pragma once

#include <cassert>
#include <cstdint>
#include <vector>

namespace vorel::sat {

enum class CubeValue : std::uint8_t { no = 0, yes = 1, any = 2 };

class LiteralCube {
 public:
  LiteralCube(std::size_t size, CubeValue value)
      : size_{size}, words_((size + per_word - 1) / per_word, spread(value)) {}

  std::size_t size() const { return size_; }
  CubeValue operator[](std::size_t i) const {
    assert(i < size_);
    return static_cast<CubeValue>((words_[i / per_word] >> shift(i)) & mask);
  }
  void set(std::size_t i, CubeValue value) {
    assert(i < size_);
    std::uint64_t& word = words_[i / per_word];
    word = (word & ~(mask << shift(i))) | (static_cast<std::uint64_t>(value) << shift(i));
  }

 private:
  static constexpr std::size_t per_word = 32;
  static constexpr std::uint64_t mask = 3;
  static constexpr std::size_t shift(std::size_t i) { return i % per_word * 2; }
  static constexpr std::uint64_t spread(CubeValue value) {
    return static_cast<std::uint64_t>(value) * 0x5555555555555555u;
  }

  std::size_t size_;
  std::vector<std::uint64_t> words_;
};

}  // namespace vorel::sat
