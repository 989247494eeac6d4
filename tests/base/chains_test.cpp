#include "base/chains.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace vorel::base {
namespace {

using Way = std::vector<std::uint32_t>;  // all numbers on the way, 0 first

TEST(Chains, AgreeWithWaysWrittenOut) {
  std::mt19937 generator(1);
  const auto random = [&](std::size_t end) {
    return static_cast<std::uint32_t>(generator() % end);
  };
  for (const std::uint32_t reach : {1u, 3u, 400u}) {
    Chains chains;
    std::vector<Way> ways{{0}};
    for (std::uint32_t number = 1; number < 400; ++number) {
      const std::uint32_t before = number - 1 - random(std::min(number, reach));
      chains.append(before);
      ways.push_back(ways[before]);
      ways.back().push_back(number);
    }
    for (std::uint32_t a = 0; a < ways.size(); ++a) {
      for (std::uint32_t depth = 0; depth < ways[a].size(); ++depth) {
        ASSERT_EQ(chains.at_depth(a, depth), ways[a][depth]);
      }
      const std::uint32_t b = random(ways.size());
      const auto parted = std::ranges::mismatch(ways[a], ways[b]);
      ASSERT_EQ(chains.parting(a, b), *(parted.in1 - 1));
      ASSERT_EQ(chains.is_on_way(a, b), parted.in1 == ways[a].end());
    }
  }
}

}  // namespace
}  // namespace vorel::base
