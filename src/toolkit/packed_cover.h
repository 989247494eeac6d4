// toolkit/packed_cover.h - covers in the form that algorithms compute on: rows of 64-bit words.
// Here:      storage, conversion from and to Cover, the word-parallel operations on rows.
// Not here:  what is computed (toolkit/tautology.h, toolkit/complement.h, toolkit/expand.h, ...).
//
// Position i of a row is bits 2i and 2i+1, counted through its words: 01 admits only 0, 10 only 1,
// 11 both (a dash), 00 nothing, which no stored row has. So the bitwise and of two rows is their
// intersection, and a row contains another if it has all its bits. Positions beyond the width are
// 11. A set of positions is a row with bits 2i alone.
#pragma once

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "toolkit/cover.h"

namespace vorel::toolkit {

using Word = std::uint64_t;
using Row = std::span<Word>;
using ConstRow = std::span<const Word>;

inline constexpr std::size_t positions_per_word = 32;
inline constexpr Word low_bits = 0x5555555555555555u;
inline constexpr Word all_bits = ~Word{0};

inline std::size_t words_for(std::size_t width) {
  return (width + positions_per_word - 1) / positions_per_word;
}

// The positions where one word's row admits nothing, and where it admits both values.
inline Word empty_positions(Word word) { return low_bits & ~(word | word >> 1); }
inline Word dash_positions(Word word) { return low_bits & word & word >> 1; }
inline Word literal_positions(Word word) { return low_bits & ~(word & word >> 1); }
// From a set of positions to both bits of each.
inline Word both_bits(Word positions) { return positions | positions << 1; }

inline bool intersect(ConstRow a, ConstRow b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if (empty_positions(a[i] & b[i]) != 0) return false;
  return true;
}

// value_bit: 1 for the value 0, 2 for the value 1.
inline bool admits(ConstRow row, std::size_t position, Word value_bit) {
  return (row[position / positions_per_word] >> position % positions_per_word * 2 & value_bit) != 0;
}

inline bool contains(ConstRow larger, ConstRow smaller) {
  for (std::size_t i = 0; i < larger.size(); ++i)
    if ((smaller[i] & ~larger[i]) != 0) return false;
  return true;
}

inline bool is_full(ConstRow row) {
  for (const Word word : row)
    if (word != all_bits) return false;
  return true;
}

inline std::size_t literals_of(ConstRow row) {
  std::size_t count = 0;
  for (const Word word : row)
    count += static_cast<std::size_t>(std::popcount(literal_positions(word)));
  return count;
}

// Calls visit(position) for each position of a set, in ascending order.
template <class Visit>
void for_each_position(ConstRow positions, const Visit& visit) {
  for (std::size_t i = 0; i < positions.size(); ++i)
    for (Word rest = positions[i]; rest != 0; rest &= rest - 1)
      visit(i * positions_per_word + static_cast<std::size_t>(std::countr_zero(rest)) / 2);
}

class PackedCover {
 public:
  explicit PackedCover(std::size_t width) : width_{width}, stride_{words_for(width)} {}
  explicit PackedCover(const Cover& cover);
  Cover unpacked() const;
  // Asserts that each row admits something at each position, and both values beyond the width.
  void check() const;

  std::size_t width() const { return width_; }
  std::size_t stride() const { return stride_; }  // words of a row; none at width 0
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  Row operator[](std::size_t i) {
    assert(i < size_);
    return {words_.data() + i * stride_, stride_};
  }
  ConstRow operator[](std::size_t i) const {
    assert(i < size_);
    return {words_.data() + i * stride_, stride_};
  }

  // Appends a row of dashes. Rows handed out before are no longer valid.
  Row add_full() {
    words_.resize((size_ + 1) * stride_, all_bits);
    return (*this)[size_++];
  }
  // Appends a copy of a row that is not one of this cover.
  void add(ConstRow row) {
    words_.insert(words_.end(), row.begin(), row.end());
    ++size_;
  }
  void truncate(std::size_t size) {
    assert(size <= size_);
    size_ = size;
    words_.resize(size * stride_);
  }
  // Keeps, in their order, the rows for which keep(i) holds; `i` is the number before.
  template <class Keep>
  void filter(std::size_t first, const Keep& keep) {
    std::size_t kept = first;
    for (std::size_t i = first; i < size_; ++i)
      if (keep(i)) move_row(i, kept++);
    truncate(kept);
  }

 private:
  void move_row(std::size_t from, std::size_t to) {
    for (std::size_t i = 0; i < stride_; ++i) words_[to * stride_ + i] = words_[from * stride_ + i];
  }

  std::size_t width_, stride_, size_ = 0;
  std::vector<Word> words_;
};

// Removes rows that another one contains; of equal rows the first stays.
void remove_contained(PackedCover& cover);

}  // namespace vorel::toolkit
