// toolkit/column_index.h - the rows of a cover, column by column.
// Here:      for each position and value the set of rows that admit it, as words of bits.
// Not here:  what is asked of them (toolkit/expand.h, toolkit/irredundant.h).
// A question to all rows costs a pass over as many words as there are literals, for 64 rows each.
#pragma once

#include <vector>

#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

class ColumnIndex {
 public:
  // A copy: later rows of the cover are not in it.
  explicit ColumnIndex(const PackedCover& cover);

  std::size_t set_words() const { return set_words_; }
  // Rows as bits; none beyond the last row.
  ConstRow all_rows() const { return all_rows_; }
  // The rows that admit the value; value_bit: 1 for the value 0, 2 for the value 1.
  ConstRow admitting(std::size_t position, Word value_bit) const {
    return std::span(words_).subspan((position * 2 + value_bit - 1) * set_words_, set_words_);
  }

 private:
  std::size_t set_words_;
  std::vector<Word> words_, all_rows_;
};

// Calls visit(i) for each row i of a set, in ascending order.
template <class Visit>
void for_each_row(ConstRow rows, const Visit& visit) {
  for (std::size_t k = 0; k < rows.size(); ++k)
    for (Word rest = rows[k]; rest != 0; rest &= rest - 1)
      visit(k * 64 + static_cast<std::size_t>(std::countr_zero(rest)));
}

}  // namespace vorel::toolkit
