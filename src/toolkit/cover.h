// toolkit/cover.h - a sum of products: cubes over the same variables.
// Here:      storage, text form, sorting, renaming of positions.
// Not here:  complement (toolkit/complement.h), minimisation (toolkit/minimise.h), division and
//            kernels (toolkit/algebra.h), factoring (toolkit/factor.h).
// Invariant: every cube has width() positions. check() asserts it, and that of each cube.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/cube.h"

namespace vorel::toolkit {

class Cover {
 public:
  Cover() = default;
  // The constant: no cube for false, one cube of dashes for true.
  Cover(std::size_t width, bool value);
  // At least one cube, in text form, as in Cover::of({"1-", "-0"}).
  static Cover of(std::initializer_list<std::string_view> cubes);

  std::size_t width() const { return width_; }
  std::size_t size() const { return cubes_.size(); }
  bool empty() const { return cubes_.empty(); }
  const Cube& operator[](std::size_t i) const {
    assert(i < cubes_.size());
    return cubes_[i];
  }
  auto begin() const { return cubes_.begin(); }
  auto end() const { return cubes_.end(); }

  void add(Cube cube) {
    assert(cube.size() == width_ && "all cubes of a cover have the same variables");
    cubes_.push_back(std::move(cube));
  }
  void reserve(std::size_t cubes) { cubes_.reserve(cubes); }
  void clear() { cubes_.clear(); }  // the width stays
  // Called by whatever makes a cover for others, when it is done.
  void check() const;

  // Into the order of cubes.
  void sort();
  // Literals of all cubes together.
  std::size_t literal_count() const;

  bool operator==(const Cover& other) const = default;

 private:
  std::size_t width_ = 0;
  std::vector<Cube> cubes_;
};

// The cubes' text forms, joined by line feeds.
std::string to_string(const Cover& cover);

// Of width old_position.size(): position i of each cube is its position old_position[i] before.
Cover reindex(const Cover& cover, std::span<const std::size_t> old_position);

}  // namespace vorel::toolkit
