// base/bit_rows.h - a table of bits, row after row.
// Memory is that of all bits: 10,000 rows of 10,000 bits take 12 MB.
#pragma once

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vorel::base {

// A set of small numbers, one bit each.
using BitRow = std::span<const std::uint64_t>;

// Calls visit(number) for each member, in ascending order.
template <class Visit>
void for_each_bit(BitRow row, const Visit& visit) {
  for (std::size_t i = 0; i < row.size(); ++i)
    for (std::uint64_t rest = row[i]; rest != 0; rest &= rest - 1)
      visit(static_cast<std::uint32_t>(i * 64) +
            static_cast<std::uint32_t>(std::countr_zero(rest)));
}

inline bool has_bit(BitRow row, std::uint32_t number) {
  assert(number / 64 < row.size());
  return ((row[number / 64] >> number % 64) & 1u) != 0;
}

class BitRows {
 public:
  BitRows() = default;
  BitRows(std::size_t rows, std::size_t columns)
      : stride_{(columns + 63) / 64}, words_(rows * stride_, 0) {}

  std::size_t stride() const { return stride_; }  // words of a row

  BitRow operator[](std::size_t row) const {
    assert((row + 1) * stride_ <= words_.size());
    return {words_.data() + row * stride_, stride_};
  }
  void set(std::size_t row, std::uint32_t column) {
    assert(column / 64 < stride_ && (row + 1) * stride_ <= words_.size());
    words_[row * stride_ + column / 64] |= std::uint64_t{1} << column % 64;
  }
  void reset(std::size_t row, std::uint32_t column) {
    assert(column / 64 < stride_ && (row + 1) * stride_ <= words_.size());
    words_[row * stride_ + column / 64] &= ~(std::uint64_t{1} << column % 64);
  }
  // Adds the members of another row.
  void add(std::size_t row, std::size_t other) {
    std::uint64_t* const to = words_.data() + row * stride_;
    const std::uint64_t* const from = words_.data() + other * stride_;
    for (std::size_t i = 0; i < stride_; ++i) to[i] |= from[i];
  }
  void add(std::size_t row, BitRow members) {
    assert(members.size() == stride_);
    std::uint64_t* const to = words_.data() + row * stride_;
    for (std::size_t i = 0; i < stride_; ++i) to[i] |= members[i];
  }

 private:
  std::size_t stride_ = 0;
  std::vector<std::uint64_t> words_;
};

}  // namespace vorel::base
