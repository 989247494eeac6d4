#include "decomposition/word_tables.h"

#include <algorithm>
#include <cassert>

#include "base/hashing.h"

namespace vorel::decomposition {
namespace {

constexpr std::uint64_t mask_of(std::size_t points) {
  return points == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << points) - 1;
}

std::uint64_t word_between(std::uint64_t lower, std::uint64_t upper, std::size_t points) {
  if (lower == 0) return 0;
  if (upper == mask_of(points)) return upper;
  const std::size_t half = points / 2;
  const std::uint64_t low = mask_of(half);
  const std::uint64_t lower_0 = lower & low, lower_1 = lower >> half;
  const std::uint64_t upper_0 = upper & low, upper_1 = upper >> half;
  if (lower_0 == lower_1 && upper_0 == upper_1) {
    const std::uint64_t both = word_between(lower_0, upper_0, half);
    return both << half | both;
  }
  // What the other half does not allow needs the literal; the rest may do without.
  const std::uint64_t with_0 = word_between(lower_0 & ~upper_1, upper_0, half);
  const std::uint64_t with_1 = word_between(lower_1 & ~upper_0, upper_1, half);
  const std::uint64_t rest = (lower_0 & ~with_0) | (lower_1 & ~with_1);
  const std::uint64_t without = word_between(rest, upper_0 & upper_1, half);
  return (with_1 | without) << half | with_0 | without;
}

}  // namespace

WordTables::WordTables(std::size_t words_per_table)
    : words_per_table_{words_per_table}, slots_(64, free_slot) {}

std::size_t WordTables::slot_of(const std::uint64_t* table) const {
  std::uint64_t hash = 0;
  for (std::size_t i = 0; i < words_per_table_; ++i) hash = base::combine_hash(hash, table[i]);
  std::size_t slot = hash & (slots_.size() - 1);
  while (slots_[slot] != free_slot &&
         !std::equal(table, table + words_per_table_, (*this)[slots_[slot]]))
    slot = (slot + 1) & (slots_.size() - 1);
  return slot;
}

void WordTables::grow() {
  slots_.assign(2 * slots_.size(), free_slot);
  for (std::uint32_t i = 0; i < size_; ++i) slots_[slot_of((*this)[i])] = i;
}

std::uint32_t WordTables::number_of(const std::uint64_t* table) {
  std::size_t slot = slot_of(table);
  if (slots_[slot] != free_slot) return slots_[slot];
  words_.insert(words_.end(), table, table + words_per_table_);
  const std::uint32_t number = slots_[slot] = size_++;
  if (2 * std::size_t{size_} > slots_.size()) grow();
  return number;
}

void find_between(const std::uint64_t* lower, const std::uint64_t* upper, std::size_t words,
                  std::size_t points_per_word, std::uint64_t* result, std::uint64_t* scratch) {
  if (words == 1) {
    *result = word_between(*lower, *upper, points_per_word);
    return;
  }
  assert(points_per_word == 64);
  const bool is_none = std::all_of(lower, lower + words, [](auto word) { return word == 0; });
  if (is_none || std::all_of(upper, upper + words, [](auto word) { return ~word == 0; })) {
    std::fill(result, result + words, is_none ? 0 : ~std::uint64_t{0});
    return;
  }
  // As word_between does.
  const std::size_t half = words / 2;
  std::uint64_t *const part = scratch, *const bound = part + half, *const without = bound + half,
                       *const free = without + half;
  const auto split = [&](std::size_t at, std::size_t other) {
    for (std::size_t i = 0; i < half; ++i) part[i] = lower[at + i] & ~upper[other + i];
    find_between(part, upper + at, half, points_per_word, result + at, free);
  };
  split(0, half);
  split(half, 0);
  for (std::size_t i = 0; i < half; ++i) {
    part[i] = (lower[i] & ~result[i]) | (lower[half + i] & ~result[half + i]);
    bound[i] = upper[i] & upper[half + i];
  }
  find_between(part, bound, half, points_per_word, without, free);
  for (std::size_t i = 0; i < words; ++i) result[i] |= without[i % half];
}

}  // namespace vorel::decomposition
