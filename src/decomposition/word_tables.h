// decomposition/word_tables.h - truth tables in machine words.
// Here:      numbers for tables of one size, a function between two others.
// Not here:  what the functions are good for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vorel::decomposition {

// Numbers tables in the order in which they come. A table must not be one of those that it gives
// out, as these may move.
class WordTables {
 public:
  explicit WordTables(std::size_t words_per_table);

  std::uint32_t number_of(const std::uint64_t* table);
  std::uint32_t size() const { return size_; }
  const std::uint64_t* operator[](std::uint32_t number) const {
    return &words_[number * words_per_table_];
  }

 private:
  std::size_t slot_of(const std::uint64_t* table) const;
  void grow();

  static constexpr std::uint32_t free_slot = ~0u;
  std::size_t words_per_table_;
  std::uint32_t size_ = 0;
  std::vector<std::uint64_t> words_;
  std::vector<std::uint32_t> slots_;  // numbers; a power of two, at most half of them in use
};

// The function of an irredundant sum [Minato-1992] between two others: true where `lower` is, and
// nowhere that `upper` is not. The highest digit of a point is the first variable. Tables of less
// than a word, of 2^k points, have nothing above these. Scratch of 3 times `words` words.
void find_between(const std::uint64_t* lower, const std::uint64_t* upper, std::size_t words,
                  std::size_t points_per_word, std::uint64_t* result, std::uint64_t* scratch);

}  // namespace vorel::decomposition
