#include "toolkit/tautology.h"

#include <algorithm>
#include <cmath>

namespace vorel::toolkit {
namespace {

// The part of all points that lies in the rows, each counted by itself, is clearly less than one.
// Rounding loses less than the margin.
bool are_too_small(const PackedCover& rows, std::size_t first) {
  constexpr double margin = 1e-6;
  double part = 0;
  for (std::size_t i = first; i < rows.size(); ++i)
    part += std::ldexp(1.0, -static_cast<int>(literals_of(rows[i])));
  return part < 1 - margin;
}

bool has_all(ConstRow row, ConstRow bits) {
  for (std::size_t i = 0; i < row.size(); ++i)
    if ((row[i] & bits[i]) != bits[i]) return false;
  return true;
}

}  // namespace

void ColumnSummary::read(const PackedCover& rows, std::size_t first) {
  meet_.assign(words_for(width_), all_bits);
  join_.assign(words_for(width_), 0);
  has_full_row_ = false;
  for (std::size_t i = first; i < rows.size(); ++i) {
    const ConstRow row = rows[i];
    Word common = all_bits;
    for (std::size_t k = 0; k < row.size(); ++k) {
      meet_[k] &= row[k];
      join_[k] |= row[k];
      common &= row[k];
    }
    has_full_row_ = has_full_row_ || common == all_bits;
  }
}

bool ColumnSummary::is_unate() const {
  for (const Word word : meet_)
    if (empty_positions(word) != 0) return false;
  return true;
}

std::size_t SplitChooser::choose(const PackedCover& rows, std::size_t first,
                                 const ColumnSummary& summary) {
  binate_.clear();
  for (const Word word : summary.meet()) binate_.push_back(empty_positions(word));
  counts_.assign(rows.width(), 0);
  for (std::size_t i = first; i < rows.size(); ++i) {
    for (std::size_t k = 0; k < rows.stride(); ++k) {
      const Word literals = literal_positions(rows[i][k]) & binate_[k];
      for (Word rest = literals; rest != 0; rest &= rest - 1)
        ++counts_[k * positions_per_word + static_cast<std::size_t>(std::countr_zero(rest)) / 2];
    }
  }
  const auto most = std::max_element(counts_.begin(), counts_.end());
  assert(most != counts_.end() && *most > 0 && "a unate cover needs no splitting");
  return static_cast<std::size_t>(most - counts_.begin());
}

void add_cofactors(PackedCover& rows, std::size_t first, std::size_t last, std::size_t position,
                   Word value_bit) {
  const std::size_t word = position / positions_per_word;
  const std::size_t shift = position % positions_per_word * 2;
  for (std::size_t i = first; i < last; ++i) {
    if (!admits(rows[i], position, value_bit)) continue;
    const Row copy = rows.add_full();
    std::ranges::copy(rows[i], copy.begin());
    copy[word] |= Word{3} << shift;
  }
}

// Unate columns cannot help: a tautology is one without the rows that have literals there.
std::optional<bool> TautologyCheck::decide_without_split(std::size_t first) {
  for (;;) {
    summary_.read(rows_, first);
    if (summary_.has_full_row()) return true;
    if (rows_.size() == first || summary_.has_constant_column()) return false;
    unate_bits_.clear();
    bool any = false;
    for (const Word word : summary_.meet()) {
      const Word unate = literal_positions(word) & ~empty_positions(word);
      unate_bits_.push_back(~word & both_bits(unate));
      any = any || unate != 0;
    }
    if (!any) break;
    rows_.filter(first, [&](std::size_t i) { return has_all(rows_[i], unate_bits_); });
  }
  if (are_too_small(rows_, first)) return false;
  return std::nullopt;
}

bool TautologyCheck::is_tautology(std::size_t first) {
  if (const auto decided = decide_without_split(first)) return *decided;
  const std::size_t position = chooser_.choose(rows_, first, summary_);
  const std::size_t last = rows_.size();
  for (const Word value_bit : {Word{1}, Word{2}}) {
    add_cofactors(rows_, first, last, position, value_bit);
    const bool holds = is_tautology(last);
    rows_.truncate(last);
    if (!holds) return false;
  }
  return true;
}

bool TautologyCheck::contains_cube(const PackedCover& cover, ConstRow cube,
                                   const std::vector<bool>* left_out) {
  rows_.truncate(0);
  for (std::size_t i = 0; i < cover.size(); ++i) {
    if ((left_out != nullptr && (*left_out)[i]) || !intersect(cover[i], cube)) continue;
    if (contains(cover[i], cube)) return true;
    const Row row = rows_.add_full();
    for (std::size_t k = 0; k < row.size(); ++k) row[k] = cover[i][k] | ~cube[k];
  }
  return is_tautology(0);
}

}  // namespace vorel::toolkit
