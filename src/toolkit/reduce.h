// toolkit/reduce.h - the smallest cubes that a cover can do with.
// Here:      the part of a cube that the rest of a cover leaves to it [BHMS-1984].
// Not here:  expanding what has been reduced (toolkit/expand.h).
#pragma once

#include <vector>

#include "toolkit/packed_cover.h"
#include "toolkit/tautology.h"

namespace vorel::toolkit {

class Reducer {
 public:
  explicit Reducer(const PackedCover& on) : on_{on}, rows_{on.width()}, summary_{on.width()} {}

  // The smallest cube that contains what of the ON-set lies in row i of the cover and in no other
  // row. False if there is nothing.
  bool reduce(const PackedCover& cover, std::size_t i, std::vector<Word>& reduced);

 private:
  void join_uncovered(std::size_t first, Row cube);
  void join_unate(std::size_t first, ConstRow cube);

  const PackedCover& on_;
  PackedCover rows_;  // a stack: each level of the recursion appends its cofactors
  ColumnSummary summary_;
  SplitChooser chooser_;
  std::vector<Word> joined_;
};

}  // namespace vorel::toolkit
