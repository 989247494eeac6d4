#include "decomposition/symmetry_classes.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "oracle/truth_tables.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using namespace oracle;

bool is_unchanged(const Table& f, std::uint32_t v, std::uint32_t w) {
  return f == table_from([&](std::uint32_t a) {
           const std::uint32_t at_v = (a >> v) & 1u, at_w = (a >> w) & 1u;
           const std::uint32_t rest = a & ~(1u << v) & ~(1u << w);
           return f[rest | (at_v << w) | (at_w << v)];
         });
}

TEST(SymmetryClasses, HoldTheVariablesThatMayBeSwappedInAllFourSets) {
  std::size_t pairs = 0;
  for (auto [seed, end] = support::seeds(150); seed != end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    const bool is_two_valued = random.chance(50);
    std::vector<Function> sets;
    for (int i = 0; i < (is_two_valued ? 2 : 4); ++i)
      sets.push_back(random_function(random, random.below(64), 2));
    const auto set = [&](std::size_t i) { return sets[i % sets.size()].bdd; };
    const auto cover = is_two_valued ? bdd::BDDCover::two_valued(set(0), set(1))
                                     : bdd::BDDCover(set(0), set(1), set(2), set(3));
    std::vector<std::uint32_t> all;
    for (const auto& members : symmetry_classes(cover)) {
      EXPECT_TRUE(std::ranges::is_sorted(members));
      for (const std::uint32_t v : cover.support()) {
        const bool is_symmetric = std::ranges::all_of(
            sets, [&](const Function& f) { return is_unchanged(f.table, v, members.front()); });
        EXPECT_EQ(std::ranges::count(members, v), is_symmetric ? 1 : 0);
        pairs += is_symmetric && v != members.front() ? 1 : 0;
      }
      all.insert(all.end(), members.begin(), members.end());
    }
    std::ranges::sort(all);
    EXPECT_EQ(all, cover.support());
  }
  EXPECT_GT(pairs, 20u);
}

}  // namespace
}  // namespace vorel::decomposition
