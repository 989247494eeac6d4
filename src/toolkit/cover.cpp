#include "toolkit/cover.h"

#include <algorithm>

namespace vorel::toolkit {

Cover::Cover(std::size_t width, bool value) : width_{width} {
  if (value) cubes_.emplace_back(width, Ternary::dash);
}

Cover Cover::of(std::initializer_list<std::string_view> cubes) {
  assert(cubes.size() > 0 && "the width is that of the cubes");
  Cover cover(cubes.begin()->size(), false);
  for (const std::string_view text : cubes) cover.add(Cube::from_text(text));
  return cover;
}

void Cover::check() const {
#ifndef NDEBUG
  for (const Cube& cube : cubes_) {
    assert(cube.size() == width_ && "all cubes of a cover have the same variables");
    cube.check();
  }
#endif
}

void Cover::sort() { std::ranges::sort(cubes_); }

std::size_t Cover::literal_count() const {
  std::size_t count = 0;
  for (const Cube& cube : cubes_) count += cube.literal_count();
  return count;
}

std::string to_string(const Cover& cover) {
  std::string text;
  for (const Cube& cube : cover) {
    if (&cube != &cover[0]) text += '\n';
    text += to_string(cube);
  }
  return text;
}

Cover reindex(const Cover& cover, std::span<const std::size_t> old_position) {
  Cover result(old_position.size(), false);
  result.reserve(cover.size());
  for (const Cube& cube : cover) {
    Cube renamed(old_position.size());
    for (std::size_t i = 0; i < old_position.size(); ++i) renamed.set(i, cube[old_position[i]]);
    result.add(std::move(renamed));
  }
  result.check();
  return result;
}

}  // namespace vorel::toolkit
