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
  // The rows or the columns. What is dropped stays as an empty list, so that numbers stay.
  struct Side {
    NumberLists lists;
    // One bit for several numbers each: a list can be within another only if its bits are.
    std::vector<std::uint64_t> signatures;
    // Lists that have shrunk since they were last compared: no other can be within more than then.
    std::vector<bool> has_shrunk;
    std::vector<std::uint32_t> dropped;  // in this step

    explicit Side(NumberLists all);
    void sign(std::size_t i);
    bool includes(std::uint32_t larger, std::uint32_t smaller) const;
  };

  bool take_essential();
  bool drop_rows();
  bool drop_columns();
  static bool erase_dropped(Side& side, Side& others);

  const std::vector<std::uint32_t>& weights_;
  Side rows_, columns_;
  std::vector<std::uint32_t> essential_, original_;
};

}  // namespace vorel::toolkit
