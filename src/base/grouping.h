// base/grouping.h - elements grouped by a number: the inverse of a table from elements to groups.
#pragma once

#include <cassert>
#include <cstdint>
#include <span>
#include <vector>

namespace vorel::base {

// The numbers 0 to count - 1, by the group that each belongs to; ascending within a group.
class Grouping {
 public:
  Grouping() = default;
  // group_of(i) is below `groups`.
  template <class GroupOf>
  Grouping(std::size_t groups, std::uint32_t count, GroupOf group_of) : ends_(groups + 1, 0) {
    for (std::uint32_t i = 0; i < count; ++i) {
      assert(group_of(i) < groups);
      ++ends_[group_of(i) + 1];
    }
    for (std::size_t g = 0; g < groups; ++g) ends_[g + 1] += ends_[g];
    members_.resize(count);
    std::vector<std::uint32_t> next(ends_.begin(), ends_.end() - 1);
    for (std::uint32_t i = 0; i < count; ++i) members_[next[group_of(i)]++] = i;
  }

  bool empty() const { return ends_.empty(); }  // not made yet
  std::span<const std::uint32_t> operator[](std::size_t group) const {
    assert(group + 1 < ends_.size());
    return std::span(members_).subspan(ends_[group], ends_[group + 1] - ends_[group]);
  }

 private:
  std::vector<std::uint32_t> ends_;     // where each group ends; its start is the end of the last
  std::vector<std::uint32_t> members_;  // group after group
};

}  // namespace vorel::base
