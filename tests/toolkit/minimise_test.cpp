#include "toolkit/minimise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "base/run_state.h"
#include "oracle/exact_minimum.h"
#include "support/caught_messages.h"
#include "support/seeds.h"
#include "toolkit/all_primes.h"
#include "toolkit/complement.h"
#include "toolkit/tautology.h"
#include "toolkit/toolkit_testing.h"

namespace vorel::toolkit {
namespace {

// Some rows of a bigger function: random cubes without those of ON that meet one of OFF.
std::pair<Cover, Cover> disjoint_covers(RandomCovers& random, std::size_t width) {
  const Cover off = random.cover(width, random.below(12), 50 + random.below(40));
  const Cover candidates = random.cover(width, random.below(12), 50 + random.below(40));
  Cover on(width, false);
  const PackedCover rows(candidates), others(off);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    bool meets = false;
    for (std::size_t j = 0; j < others.size(); ++j) meets |= intersect(rows[i], others[j]);
    if (!meets) on.add(candidates[i]);
  }
  return {on, off};
}

// No literal can leave any cube without meeting OFF.
void expect_prime(const Cover& cover, const TruthTable& off) {
  for (const Cube& cube : cover) {
    for (std::size_t i = 0; i < cube.size(); ++i) {
      if (cube[i] == Ternary::dash) continue;
      Cube larger = cube;
      larger.set(i, Ternary::dash);
      bool meets = false;
      for (std::uint32_t p = 0; p < off.size(); ++p)
        meets = meets || (off[p] && contains_point(larger, p));
      EXPECT_TRUE(meets) << to_string(cube);
    }
  }
}

// Every cube has a point of ON for itself.
void expect_irredundant(const Cover& cover, const TruthTable& on) {
  std::vector<bool> needed(cover.size(), false);
  for (std::uint32_t p = 0; p < on.size(); ++p) {
    std::size_t count = 0, last = 0;
    for (std::size_t i = 0; i < cover.size() && on[p]; ++i) {
      if (!contains_point(cover[i], p)) continue;
      ++count;
      last = i;
    }
    if (count == 1) needed[last] = true;
  }
  EXPECT_EQ(std::ranges::count(needed, false), 0) << to_string(cover);
}

void expect_minimised(const Cover& on, const Cover& off, const MinimiseParams& params) {
  const Cover result = minimise(on, off, params);
  const TruthTable on_table = table_of(on), off_table = table_of(off), table = table_of(result);
  for (std::uint32_t p = 0; p < table.size(); ++p) {
    ASSERT_TRUE(!on_table[p] || table[p]) << p;
    ASSERT_TRUE(!off_table[p] || !table[p]) << p;
  }
  EXPECT_TRUE(std::ranges::is_sorted(result));
  if (on.empty() || off.empty()) return;
  expect_prime(result, off_table);
  expect_irredundant(result, on_table);
}

TEST(Minimise, GivesPrimeAndIrredundantCoversBetweenOnAndNotOff) {
  support::for_each_seed(1500, [&](std::uint64_t seed) {
    RandomCovers random(seed);
    const std::size_t width = random.below(seed % 50 == 0 ? 11 : 7);
    const auto [on, off] = seed % 2 == 0 ? random.points(width, random.below(60), random.below(40))
                                         : disjoint_covers(random, width);
    MinimiseParams params;
    if (seed % 3 == 0) params = {.max_primes_per_cube = 1, .covering = {0}};
    if (seed % 5 == 0) params.simplify = true;
    if (seed % 7 == 0) params.setup = true;
    if (seed % 4 == 0) params.repeat = true;
    if (seed % 11 < 3) params.make_sparse = true;
    expect_minimised(on, off, params);
  });
}

// Asks every cube, by its points.
std::set<std::string> primes_by_definition(std::size_t width, const TruthTable& on,
                                           const TruthTable& off) {
  const auto meets = [](const TruthTable& table, const Cube& cube) {
    for (std::uint32_t p = 0; p < table.size(); ++p)
      if (table[p] && contains_point(cube, p)) return true;
    return false;
  };
  std::set<std::string> primes;
  std::size_t cubes = 1;
  for (std::size_t i = 0; i < width; ++i) cubes *= 3;
  for (std::size_t number = 0; number < cubes; ++number) {
    Cube cube(width);
    for (std::size_t i = 0, rest = number; i < width; ++i, rest /= 3)
      cube.set(i, static_cast<Ternary>(rest % 3));
    bool is_prime = !meets(off, cube) && meets(on, cube);
    for (std::size_t i = 0; i < width && is_prime; ++i) {
      Cube larger = cube;
      larger.set(i, Ternary::dash);
      is_prime = cube[i] == Ternary::dash || meets(off, larger);
    }
    if (is_prime) primes.insert(to_string(cube));
  }
  return primes;
}

TEST(AllPrimes, AreThoseOfTheDefinitionOrNoneIfTooMany) {
  support::for_each_seed(120, [&](std::uint64_t seed) {
    RandomCovers random(seed);
    const std::size_t width = seed % 30 == 0 ? 7 + random.below(2) : 1 + random.below(6);
    const auto [on, off] = seed % 2 == 0 ? random.points(width, random.below(60), random.below(40))
                                         : disjoint_covers(random, width);
    const std::set<std::string> expected = primes_by_definition(width, table_of(on), table_of(off));
    const PackedCover on_rows(on), off_rows(off);
    const auto found = all_primes(on_rows, off_rows, expected.size());
    ASSERT_TRUE(found);
    std::set<std::string> texts;
    for (const Cube& cube : found->unpacked()) texts.insert(to_string(cube));
    ASSERT_EQ(texts, expected);
    EXPECT_EQ(found->size(), expected.size());
    EXPECT_TRUE(expected.empty() || !all_primes(on_rows, off_rows, expected.size() - 1));
  });
}

// The table in one word.
std::uint64_t word_of(const Cover& points) {
  std::uint64_t word = 0;
  const TruthTable table = table_of(points);
  for (std::size_t p = 0; p < table.size(); ++p) word |= std::uint64_t{table[p]} << p;
  return word;
}

TEST(Minimise, StaysWithinTwoPercentOfTheSmallestCovers) {
  oracle::CoverCost exact, found;
  support::for_each_seed(200, [&](std::uint64_t seed) {
    RandomCovers random(seed);
    const auto [on, off] = random.points(3 + seed % 3, 10 + random.below(50), 30);
    if (on.empty() || off.empty()) return;
    const oracle::CoverCost smallest =
        oracle::ExactMinimum(on.width(), word_of(on), word_of(off)).cost();
    const Cover result = minimise(on, off);
    exact = {exact.cubes + smallest.cubes, exact.literals + smallest.literals};
    found = {found.cubes + result.size(), found.literals + result.literal_count()};
  });
  EXPECT_GE(found.cubes, exact.cubes);
  EXPECT_LE(found.cubes * 100, exact.cubes * 102);
  EXPECT_LE(found.literals * 100, exact.literals * 102);
}

// Without a choice among primes there is something to gain.
TEST(Minimise, RepeatingSavesCubesAndMakingSparseSavesLiterals) {
  const MinimiseParams plain{.max_primes_per_cube = 0, .covering = {.steps_per_row = 0}};
  MinimiseParams repeat = plain;
  repeat.repeat = true;
  MinimiseParams sparse{.make_sparse = true, .covering = {.steps_per_row = 0}};
  sparse.max_primes = 0;
  sparse.least_primes_per_cube = 0;
  MinimiseParams not_sparse = sparse;
  not_sparse.make_sparse = false;
  std::size_t cubes = 0, repeated = 0, literals = 0, sparse_literals = 0;
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    RandomCovers random(seed);
    const auto [on, off] = random.points(7, 20, 20);
    cubes += minimise(on, off, plain).size();
    repeated += minimise(on, off, repeat).size();
    literals += minimise(on, off, not_sparse).literal_count();
    sparse_literals += minimise(on, off, sparse).literal_count();
  }
  EXPECT_LT(repeated, cubes);
  EXPECT_LT(sparse_literals, literals);
}

TEST(Minimise, EmptyOnComesBeforeEmptyOff) {
  EXPECT_EQ(minimise(Cover(3, false), Cover(3, false)), Cover(3, false));
  EXPECT_EQ(minimise(Cover::of({"010"}), Cover(3, false)), Cover(3, true));
  EXPECT_EQ(minimise(Cover(0, true), Cover(0, false)), Cover(0, true));
}

TEST(Minimise, WideCoversTakeNoRecursionDeeperThanTheirWidth) {
  RandomCovers random(1);
  const std::size_t width = 300;
  Cover on(width, false), off(width, false);
  for (int i = 0; i < 60; ++i) {
    on.add(random.cube(width, 60));
    off.add(random.cube(width, 60));
  }
  const Cover result = minimise(on, off);
  TautologyCheck check(width);
  const PackedCover rows(result), wanted(on), unwanted(off);
  for (std::size_t i = 0; i < wanted.size(); ++i) EXPECT_TRUE(check.contains_cube(rows, wanted[i]));
  for (std::size_t i = 0; i < unwanted.size(); ++i)
    for (std::size_t j = 0; j < rows.size(); ++j) EXPECT_FALSE(intersect(rows[j], unwanted[i]));
}

TEST(Complement, IsExactAlsoForUnateCovers) {
  support::for_each_seed(2000, [&](std::uint64_t seed) {
    RandomCovers random(seed);
    const std::size_t width = random.below(seed % 20 == 0 ? 11 : 7);
    const Cover cover = random.cover(width, random.below(12), 30 + random.below(60));
    TruthTable expected = table_of(cover);
    expected.flip();
    ASSERT_EQ(table_of(complement(cover)), expected) << to_string(cover);

    const Cube phases = random.cube(width, 0);
    Cover unate(width, false);
    for (Cube cube : cover) {
      for (std::size_t i = 0; i < width; ++i)
        if (cube[i] != Ternary::dash) cube.set(i, phases[i]);
      unate.add(cube);
    }
    expected = table_of(unate);
    expected.flip();
    const Cover result = unate_complement(unate);
    ASSERT_EQ(table_of(result), expected) << to_string(unate);
    expect_prime(result, table_of(unate));
    Cover small(width, false);
    for (const Cube& cube : result) {
      if (cube.literal_count() <= width / 2) small.add(cube);
    }
    EXPECT_EQ(unate_complement(unate, {.max_literals = width / 2}), small);
  });
}

TEST(Tautology, IsToldFromAllButOnePoint) {
  support::for_each_seed(2000, [&](std::uint64_t seed) {
    RandomCovers random(seed);
    const std::size_t width = random.below(9);
    const Cover cover = random.cover(width, random.below(40), 40 + random.below(50));
    const Cube cube = random.cube(width, random.below(100));
    const TruthTable table = table_of(cover);
    bool expected = true;
    for (std::uint32_t p = 0; p < table.size(); ++p)
      expected = expected && (table[p] || !contains_point(cube, p));
    Cover one(width, false);
    one.add(cube);
    ASSERT_EQ(TautologyCheck(width).contains_cube(PackedCover(cover), PackedCover(one)[0]),
              expected)
        << to_string(cover) << "\nover " << to_string(cube);
  });
}

TEST(Diagnostics, ShowTheCoversAtVerbositySix) {
  const auto shown = [](int level, const auto& action) {
    const support::CaughtMessages messages;
    base::run_state().verbosity = level;
    action();
    base::run_state().verbosity = 0;
    return messages.text();
  };
  const Cover on = Cover::of({"11"}), off = Cover::of({"0-"});
  const auto all = [&] {
    complement(on);
    unate_complement(on);
    minimise(on, off);
  };
  EXPECT_EQ(shown(5, all), "");
  EXPECT_EQ(shown(6, all),
            "\nCover to be complemented:\n11\nComplemented cover:\n0-\n-0"
            "\nCover before complement:\n11\nCover after complement:\n11"
            "\nMinimisation ON-set:\n11\nOFF-set:\n0-\nMinimisation result:\n1-");
}

}  // namespace
}  // namespace vorel::toolkit
