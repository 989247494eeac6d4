// tests/toolkit/toolkit_testing.h - random covers and their truth tables.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "toolkit/cover.h"

namespace vorel::toolkit {

// Position i of a cube is bit i of a point.
inline bool contains_point(const toolkit::Cube& cube, std::uint32_t point) {
  for (std::size_t i = 0; i < cube.size(); ++i)
    if (cube[i] != toolkit::Ternary::dash &&
        (cube[i] == toolkit::Ternary::one) != ((point >> i & 1) != 0))
      return false;
  return true;
}

inline bool value_at(const toolkit::Cover& cover, std::uint32_t point) {
  for (const toolkit::Cube& cube : cover)
    if (contains_point(cube, point)) return true;
  return false;
}

using TruthTable = std::vector<bool>;

inline TruthTable table_of(const toolkit::Cover& cover) {
  TruthTable table(std::size_t{1} << cover.width());
  for (std::uint32_t point = 0; point < table.size(); ++point)
    table[point] = value_at(cover, point);
  return table;
}

inline toolkit::Cube point_cube(std::size_t width, std::uint32_t point) {
  toolkit::Cube cube(width);
  for (std::size_t i = 0; i < width; ++i)
    if ((point >> i & 1) != 0) cube.set(i, toolkit::Ternary::one);
  return cube;
}

class RandomCovers {
 public:
  explicit RandomCovers(std::uint64_t seed) : random_{seed} {}

  std::size_t below(std::size_t bound) { return random_() % bound; }

  // Each position a dash with this chance in percent.
  toolkit::Cube cube(std::size_t width, std::size_t dashes) {
    toolkit::Cube result(width);
    for (std::size_t i = 0; i < width; ++i)
      result.set(i, below(100) < dashes ? toolkit::Ternary::dash
                                        : static_cast<toolkit::Ternary>(below(2)));
    return result;
  }
  toolkit::Cover cover(std::size_t width, std::size_t cubes, std::size_t dashes) {
    toolkit::Cover result(width, false);
    for (std::size_t i = 0; i < cubes; ++i) result.add(cube(width, dashes));
    return result;
  }
  // Points, each in ON, in OFF or in neither, with these chances in percent.
  std::pair<toolkit::Cover, toolkit::Cover> points(std::size_t width, std::size_t on,
                                                   std::size_t off) {
    std::pair<toolkit::Cover, toolkit::Cover> result{toolkit::Cover(width, false),
                                                     Cover(width, false)};
    for (std::uint32_t point = 0; point < 1u << width; ++point) {
      const std::size_t dice = below(100);
      if (dice < on)
        result.first.add(point_cube(width, point));
      else if (dice < on + off)
        result.second.add(point_cube(width, point));
    }
    return result;
  }

 private:
  std::mt19937_64 random_;
};

}  // namespace vorel::toolkit
