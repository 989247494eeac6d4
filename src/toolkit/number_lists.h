// toolkit/number_lists.h - lists of numbers, one behind the other in one array.
// Here:      storage; lists grow only at the end, and shrink where they are.
// Not here:  what the numbers mean (toolkit/covering.h, toolkit/irredundant.h).
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vorel::toolkit {

class NumberLists {
 public:
  using List = std::span<const std::uint32_t>;

  std::size_t size() const { return extents_.size(); }
  bool empty() const { return extents_.empty(); }
  List operator[](std::size_t i) const {
    assert(i < extents_.size());
    return {numbers_.data() + extents_[i].first, extents_[i].size};
  }

  // A copy of a list that is not one of these.
  void add(List list) {
    extents_.push_back({numbers_.size(), list.size()});
    numbers_.insert(numbers_.end(), list.begin(), list.end());
  }
  void truncate(std::size_t lists) {
    assert(lists <= size());
    if (lists < size()) numbers_.resize(extents_[lists].first);
    extents_.resize(lists);
  }
  template <class Drop>
  void erase_if(std::size_t i, const Drop& drop) {
    const auto first = numbers_.begin() + static_cast<std::ptrdiff_t>(extents_[i].first);
    const auto last = first + static_cast<std::ptrdiff_t>(extents_[i].size);
    extents_[i].size = static_cast<std::size_t>(std::remove_if(first, last, drop) - first);
  }
  void clear(std::size_t i) { extents_[i].size = 0; }

  // For each number below `numbers` the lists that have it, in ascending order.
  NumberLists transposed(std::size_t numbers) const;

 private:
  struct Extent {
    std::size_t first, size;
  };

  std::vector<std::uint32_t> numbers_;
  std::vector<Extent> extents_;
};

inline NumberLists NumberLists::transposed(std::size_t numbers) const {
  NumberLists result;
  result.extents_.assign(numbers, {0, 0});
  for (std::size_t i = 0; i < size(); ++i)
    for (const std::uint32_t number : (*this)[i]) ++result.extents_[number].size;
  std::size_t first = 0;
  for (Extent& extent : result.extents_) {
    extent.first = first;
    first += extent.size;
    extent.size = 0;
  }
  result.numbers_.resize(first);
  for (std::uint32_t i = 0; i < size(); ++i) {
    for (const std::uint32_t number : (*this)[i]) {
      Extent& extent = result.extents_[number];
      result.numbers_[extent.first + extent.size++] = i;
    }
  }
  return result;
}

}  // namespace vorel::toolkit
