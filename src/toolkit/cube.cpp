#include "toolkit/cube.h"

#include <algorithm>
#include <bit>

#include "base/value_hash.h"

namespace vorel::toolkit {
namespace {

constexpr std::uint32_t low_bits = 0x55555555u;

}  // namespace

Cube::Cube(std::size_t size, Ternary value)
    : size_{size},
      words_((size + positions_per_word - 1) / positions_per_word, field_of(value) * low_bits) {
  const std::size_t used = size % positions_per_word;
  if (used != 0) words_.back() &= (1u << used * 2) - 1;
}

void Cube::check() const {
  assert(words_.size() == (size_ + positions_per_word - 1) / positions_per_word);
  [[maybe_unused]] const std::size_t used = size_ % positions_per_word;
  assert((used == 0 || words_.back() >> used * 2 == 0) &&
         "nothing stands behind the last position");
  assert(std::ranges::none_of(
             words_, [](std::uint32_t word) { return (word & word >> 1 & low_bits) != 0; }) &&
         "a dash is not a 1");
}

Cube Cube::from_text(std::string_view text) {
  Cube cube(text.size(), Ternary::dash);
  for (std::size_t i = 0; i < text.size(); ++i) {
    assert((text[i] == '0' || text[i] == '1' || text[i] == '-') && "not a cube");
    if (text[i] != '-') cube.set(i, text[i] == '1' ? Ternary::one : Ternary::zero);
  }
  return cube;
}

std::size_t Cube::literal_count() const {
  std::size_t dashes = 0;
  for (const std::uint32_t word : words_)
    dashes += static_cast<std::size_t>(std::popcount(word & low_bits));
  return size_ - dashes;
}

std::strong_ordering Cube::operator<=>(const Cube& other) const {
  if (size_ != other.size_) return size_ <=> other.size_;
  const auto [mine, others] = std::ranges::mismatch(words_, other.words_);
  if (mine == words_.end()) return std::strong_ordering::equal;
  const std::uint32_t difference = *mine ^ *others;
  const std::uint32_t lowest = difference & (~difference + 1);
  return (*mine & lowest) != 0 ? std::strong_ordering::greater : std::strong_ordering::less;
}

std::string to_string(const Cube& cube) {
  std::string text(cube.size(), '-');
  for (std::size_t i = 0; i < cube.size(); ++i)
    if (cube[i] != Ternary::dash) text[i] = cube[i] == Ternary::one ? '1' : '0';
  return text;
}

std::uint32_t hash_of(const Cube& cube) {
  std::uint32_t hash = base::hash_seed;
  for (std::size_t i = cube.words().size(); i-- > 0;)
    hash = base::combine_hashes(hash, base::fnv1a(cube.words()[i]));
  return hash;
}

}  // namespace vorel::toolkit
