#include "toolkit/column_index.h"

namespace vorel::toolkit {

ColumnIndex::ColumnIndex(const PackedCover& cover)
    : set_words_{(cover.size() + 63) / 64}, all_rows_(set_words_, all_bits) {
  if (cover.size() % 64 != 0) all_rows_.back() = (Word{1} << cover.size() % 64) - 1;
  words_.reserve(cover.width() * 2 * set_words_);
  for (std::size_t column = 0; column < cover.width() * 2; ++column)
    words_.insert(words_.end(), all_rows_.begin(), all_rows_.end());
  for (std::size_t i = 0; i < cover.size(); ++i) {
    for (std::size_t k = 0; k < cover.stride(); ++k) {
      for (Word missing = ~cover[i][k]; missing != 0; missing &= missing - 1) {
        const auto bit = static_cast<std::size_t>(std::countr_zero(missing));
        words_[(k * 64 + bit) * set_words_ + i / 64] &= ~(Word{1} << i % 64);
      }
    }
  }
}

}  // namespace vorel::toolkit
