// toolkit/covering.h - choose columns of least weight so that every row has one.
// Here:      the weighted covering problem: reductions, a greedy choice, local search with row
//            weights.
// Not here:  what rows and columns mean (toolkit/irredundant.h).
#pragma once

#include <cstdint>
#include <vector>

#include "toolkit/number_lists.h"

namespace vorel::toolkit {

struct CoveringParams {
  // Steps of local search after the greedy choice, for each row that the reductions leave.
  std::uint32_t steps_per_row = 20;
  std::uint32_t max_steps = 10'000;  // in all
};

struct CoveringProblem {
  std::vector<std::uint32_t> weights;  // of the columns; positive
  NumberLists rows;                    // columns, sorted, without repetitions, not empty
};

// The chosen columns in ascending order; none of them can be left out. Their weight is small, not
// always the least.
std::vector<std::uint32_t> solve_covering(const CoveringProblem& problem,
                                          const CoveringParams& params = {});

}  // namespace vorel::toolkit
