#include "toolkit/packed_cover.h"

#include <algorithm>
#include <numeric>

namespace vorel::toolkit {
namespace {

// Word i of a row lies in words 2i and 2i+1 of a cube, whose low bits tell dashes.
Word pack_word(std::uint32_t first, std::uint32_t second) {
  const Word word = Word{first} | Word{second} << 32;
  const Word dash = word & low_bits, one = word >> 1 & low_bits;
  return (dash | (low_bits & ~one)) | (dash | one) << 1;
}

Word unpack_word(Word word) {
  const Word dash = dash_positions(word);
  return dash | (word & low_bits << 1 & ~(dash << 1));
}

void pack(const Cube& cube, Row row) {
  const auto words = cube.words();
  for (std::size_t i = 0; i < row.size(); ++i)
    row[i] = pack_word(words[2 * i], 2 * i + 1 < words.size() ? words[2 * i + 1] : 0);
  const std::size_t used = cube.size() % positions_per_word;
  if (used != 0) row.back() |= all_bits << used * 2;
}

Cube unpack(ConstRow row, std::size_t width) {
  Cube cube(width);
  const auto words = cube.words();
  for (std::size_t i = 0; i < words.size(); ++i)
    words[i] = static_cast<std::uint32_t>(unpack_word(row[i / 2]) >> i % 2 * 32);
  const std::size_t used = width % Cube::positions_per_word;
  if (used != 0) words.back() &= (1u << used * 2) - 1;
  return cube;
}

}  // namespace

PackedCover::PackedCover(const Cover& cover) : PackedCover(cover.width()) {
  words_.reserve(cover.size() * stride_);
  for (const Cube& cube : cover) pack(cube, add_full());
  check();
}

void PackedCover::check() const {
  assert(stride_ == words_for(width_) && words_.size() == size_ * stride_);
  assert(std::ranges::none_of(words_, [](Word word) { return empty_positions(word) != 0; }) &&
         "a row admits something at each position");
  [[maybe_unused]] const std::size_t used = width_ % positions_per_word;
  for (std::size_t i = 0; used != 0 && i < size_; ++i)
    assert((*this)[i].back() >> used * 2 == all_bits >> used * 2 &&
           "nothing is told behind the end");
}

Cover PackedCover::unpacked() const {
  check();
  Cover cover(width_, false);
  cover.reserve(size_);
  for (std::size_t i = 0; i < size_; ++i) cover.add(unpack((*this)[i], width_));
  cover.check();
  return cover;
}

// A row lies only in equal ones, which a sorted order has side by side, and in rows of fewer
// literals.
void remove_contained(PackedCover& cover) {
  std::vector<std::size_t> order(cover.size()), literals(cover.size()), kept;
  std::iota(order.begin(), order.end(), std::size_t{0});
  for (std::size_t i = 0; i < cover.size(); ++i) literals[i] = literals_of(cover[i]);
  std::ranges::stable_sort(order, [&](std::size_t i, std::size_t j) {
    if (literals[i] != literals[j]) return literals[i] < literals[j];
    return std::ranges::lexicographical_compare(cover[i], cover[j]);
  });
  std::vector<bool> stays(cover.size(), false);
  for (std::size_t n = 0, shorter = 0; n < order.size(); ++n) {
    const std::size_t i = order[n];
    if (n > 0 && std::ranges::equal(cover[order[n - 1]], cover[i])) continue;
    if (n > 0 && literals[order[n - 1]] != literals[i]) shorter = kept.size();
    stays[i] = std::none_of(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(shorter),
                            [&](std::size_t larger) { return contains(cover[larger], cover[i]); });
    if (stays[i]) kept.push_back(i);
  }
  cover.filter(0, [&](std::size_t i) { return stays[i]; });
}

}  // namespace vorel::toolkit
