// zchaff/group_table.h - which groups are alive, and in what order they were made.
#pragma once

#include <array>
#include <optional>

#include "zchaff/solver_types.h"

namespace vorel::zchaff {

class GroupTable {
 public:
  // The lowest free number; none, with an error reported, when max_groups groups are alive.
  std::optional<Group> allocate();
  // False, with an error reported, when no such group is alive.
  bool release(Group group);

  // The permanent group is always alive.
  bool is_alive(Group group) const {
    return group == permanent || (index_of(group) <= max_groups && births_[index_of(group)] != 0);
  }
  // Of living groups; the permanent group is the oldest of all.
  bool is_younger(Group a, Group b) const { return births_[index_of(a)] > births_[index_of(b)]; }
  Group youngest_of(GroupSet groups) const;

 private:
  std::array<std::uint64_t, max_groups + 1> births_{};  // 0: not alive
  std::uint64_t made_ = 0;
};

}  // namespace vorel::zchaff
