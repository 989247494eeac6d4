// toolkit/tautology.h - does a cover contain a cube?
// Here:      the unate-recursive test for tautology [BHMS-1984], and the choice of the variable to
//            split on that other recursions share.
// Not here:  complements (toolkit/complement.h).
#pragma once

#include <optional>
#include <vector>

#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

// What the columns of some rows look like.
class ColumnSummary {
 public:
  explicit ColumnSummary(std::size_t width) : width_{width} {}
  // Over the rows from `first` on.
  void read(const PackedCover& rows, std::size_t first);

  // Bits present in every row, and bits present in some row. Without rows: all, and none.
  ConstRow meet() const { return meet_; }
  ConstRow join() const { return join_; }
  // Some row is all dashes.
  bool has_full_row() const { return has_full_row_; }
  // Every column that has literals has them in both phases, or in one.
  bool is_unate() const;
  // Some column has only literals, all of one phase.
  bool has_constant_column() const { return !is_full(join_); }

 private:
  std::size_t width_;
  std::vector<Word> meet_, join_;
  bool has_full_row_ = false;
};

// The column with literals in both phases that has most of them; the first of those. There must be
// such a column in the summary, which is that of the rows from `first` on.
class SplitChooser {
 public:
  std::size_t choose(const PackedCover& rows, std::size_t first, const ColumnSummary& summary);

 private:
  std::vector<std::uint32_t> counts_;
  std::vector<Word> binate_;
};

// Appends the cofactors of the rows in [first, last) that admit this value at the position.
void add_cofactors(PackedCover& rows, std::size_t first, std::size_t last, std::size_t position,
                   Word value_bit);

// Reusable: holds the scratch memory of the recursion, whose depth is at most the width.
class TautologyCheck {
 public:
  explicit TautologyCheck(std::size_t width) : rows_{width}, summary_{width} {}

  // Whether the rows of the cover that are not left out contain the cube together.
  bool contains_cube(const PackedCover& cover, ConstRow cube,
                     const std::vector<bool>* left_out = nullptr);

 private:
  bool is_tautology(std::size_t first);
  std::optional<bool> decide_without_split(std::size_t first);

  PackedCover rows_;  // a stack: each level of the recursion appends its cofactors
  ColumnSummary summary_;
  SplitChooser chooser_;
  std::vector<Word> unate_bits_;
};

}  // namespace vorel::toolkit
