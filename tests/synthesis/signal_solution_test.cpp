#include "synthesis/signal_solution.h"

#include <gtest/gtest.h>

namespace vorel::synthesis {
namespace {

TEST(SignalSolution, TrimmingKeepsWhatTiesWithTheFirstAlternativeThatMayBeTheLast) {
  const struct {
    std::size_t first, last;
    std::vector<std::uint64_t> costs, left;
  } table[] = {
      {0, 0, {1, 1}, {1}},
      {0, 9, {1, 1, 1, 2}, {1, 1, 1}},
      {1, 2, {1, 2, 2, 2, 3}, {1, 2, 2}},
      {1, 3, {1, 2, 3, 3}, {1, 2}},
      {2, 5, {1, 2}, {1, 2}},
      {1, 5, {1, 2}, {1, 2}},
  };
  for (const auto& row : table) {
    SignalSolution solution(false, "z", {});
    for (const std::uint64_t cost : row.costs) {
      SignalImplementation alternative;
      alternative.cost = cost;
      solution.alternatives.push_back(std::move(alternative));
    }
    solution.trim(row.first, row.last);
    std::vector<std::uint64_t> left;
    for (const auto& alternative : solution.alternatives) left.push_back(alternative.cost);
    EXPECT_EQ(left, row.left) << row.first << ' ' << row.last;
  }
}

}  // namespace
}  // namespace vorel::synthesis
