// base/grouping.h - elements grouped by others: the inverse of a table from elements to groups.
#pragma once

#include <cassert>
#include <cstdint>
#include <span>
#include <vector>

#include "base/ptr_list.h"

namespace vorel::base {

// The elements of a list as one flat list, group after group; in the order of the list within a
// group. The elements must outlive it.
template <class Element>
class Grouping {
 public:
  Grouping() = default;
  // group_of(element) is the number of its group, below `groups`, or no_index for one in none.
  template <class GroupOf>
  Grouping(std::size_t groups, const OwnedList<Element>& elements, GroupOf group_of)
      : ends_(groups + 1, 0) {
    for (const auto& element : elements) {
      const std::uint32_t group = group_of(*element);
      assert(group < groups || group == no_index);
      if (group != no_index) ++ends_[group + 1];
    }
    for (std::size_t g = 0; g < groups; ++g) ends_[g + 1] += ends_[g];
    members_.resize(ends_.back());
    std::vector<std::uint32_t> next(ends_.begin(), ends_.end() - 1);
    for (const auto& element : elements) {
      const std::uint32_t group = group_of(*element);
      if (group != no_index) members_[next[group]++] = element.get();
    }
  }

  bool empty() const { return ends_.empty(); }  // not made yet
  std::span<const Element* const> operator[](std::size_t group) const {
    assert(group + 1 < ends_.size());
    return std::span(members_).subspan(ends_[group], ends_[group + 1] - ends_[group]);
  }

 private:
  std::vector<std::uint32_t> ends_;  // where each group ends; its start is the end of the last
  std::vector<const Element*> members_;
};

}  // namespace vorel::base
