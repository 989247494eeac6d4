#include "toolkit/reduce.h"

#include <algorithm>

namespace vorel::toolkit {

// Outside unate rows lies the point where each column has the value that no row asks for. The other
// value of a column is outside too, unless its literal alone is a row.
void Reducer::join_unate(std::size_t first, ConstRow cube) {
  std::vector<Word> outside(cube.size(), all_bits);
  for (std::size_t i = first; i < rows_.size(); ++i) {
    if (literals_of(rows_[i]) != 1) continue;
    for (std::size_t k = 0; k < outside.size(); ++k) {
      const Word column = both_bits(literal_positions(rows_[i][k]));
      outside[k] &= ~(rows_[i][k] & column);
    }
  }
  for (std::size_t k = 0; k < outside.size(); ++k) joined_[k] |= cube[k] & outside[k];
}

// Joins what of the cube lies outside the rows from `first` on. The cube comes back as it was.
void Reducer::join_uncovered(std::size_t first, Row cube) {
  summary_.read(rows_, first);
  if (summary_.has_full_row() || contains(joined_, cube)) return;
  if (summary_.is_unate()) return join_unate(first, cube);
  const std::size_t position = chooser_.choose(rows_, first, summary_);
  const std::size_t last = rows_.size();
  Word& word = cube[position / positions_per_word];
  const Word saved = word;
  const std::size_t shift = position % positions_per_word * 2;
  for (const Word value_bit : {Word{1}, Word{2}}) {
    add_cofactors(rows_, first, last, position, value_bit);
    word = (saved & ~(Word{3} << shift)) | value_bit << shift;
    join_uncovered(last, cube);
    rows_.truncate(last);
  }
  word = saved;
}

bool Reducer::reduce(const PackedCover& cover, std::size_t i, std::vector<Word>& reduced) {
  assert(i < cover.size() && cover.width() == on_.width());
  joined_.assign(cover.stride(), 0);
  std::vector<Word> common(cover.stride());
  for (std::size_t j = 0; j < on_.size(); ++j) {
    if (!intersect(on_[j], cover[i])) continue;
    for (std::size_t k = 0; k < common.size(); ++k) common[k] = on_[j][k] & cover[i][k];
    rows_.truncate(0);
    for (std::size_t r = 0; r < cover.size(); ++r) {
      if (r == i || !intersect(cover[r], common)) continue;
      const Row row = rows_.add_full();
      for (std::size_t k = 0; k < row.size(); ++k) row[k] = cover[r][k] | ~common[k];
    }
    join_uncovered(0, common);
  }
  reduced = joined_;
  return std::ranges::any_of(joined_, [](Word word) { return word != 0; });
}

}  // namespace vorel::toolkit
