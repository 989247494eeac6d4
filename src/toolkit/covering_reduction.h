// toolkit/covering_reduction.h - what of a covering problem is decided without a search.
// Here:      essential columns, rows and columns that others make superfluous [Rudell-1989].
// Not here:  the search in what is left (toolkit/covering.h).
#pragma once

#include "toolkit/covering.h"

namespace vorel::toolkit {

class CoveringReduction {
 public:
  explicit CoveringReduction(const CoveringProblem& problem);

  // Columns that a choice of least weight may take without loss.
  const std::vector<std::uint32_t>& essential() const { return essential_; }
  // The rest, with the columns renumbered in ascending order.
  CoveringProblem core();
  std::uint32_t original(std::uint32_t core_column) const { return original_[core_column]; }

 private:
  bool take_essential();
  bool drop_rows();
  bool drop_columns();
  void index();

  const std::vector<std::uint32_t>& weights_;
  std::vector<std::vector<std::uint32_t>> rows_, rows_of_;
  std::vector<std::uint32_t> essential_, original_;
};

}  // namespace vorel::toolkit
