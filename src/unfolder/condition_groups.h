// unfolder/condition_groups.h - conditions in groups that can be searched for what fits to an
// event.
// Here:      groups whose members are in conflict with each other, divided by where their pasts
//            part.
// Not here:  pasts (unfolder/local_histories.h), who asks (unfolder/co_set_finder.h).
//
// Where there are many choices, nearly all members of a group are in conflict with an event that
// asks. A large group is divided by a fork: a place, or several, and an event that consumed there
// (or none) behind which the pasts of members go on differently. Whoever asks knows how its own
// past goes on there, mostly, and looks at these members only. Those whose past has not come to the
// fork, or has passed it by, are others, which all must look at.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstdint>
#include <optional>
#include <vector>

#include "unfolder/branching_process.h"

namespace vorel::unfolder {

class ConditionGroups {
 public:
  using Group = std::uint32_t;  // a condition of a small group, or a division
  static constexpr Group empty = no_condition;

  struct Fork {
    std::uint32_t entry, above;
  };
  // How a past goes on at a fork: by a number above 0, or as follows.
  using Side = std::uint32_t;
  static constexpr Side undecided = 0;  // it has not come that far
  static constexpr Side passed_by = 0xFFFFFFFFu;

  // Adds a condition. What is known of members has the functions
  //   next(c)          a reference to the one behind it in the same small group
  //   side(c, fork)    how its past goes on, undecided if that is not known any more
  //   find_fork(c, d)  a fork at which two go on by different numbers, if there is one
  template <class Members>
  void add(Group& group, ConditionId c, Members members);

  // Calls visit(c) for members, among which are all that do not go on differently than side(fork)
  // at any fork, and goes on with the one behind, which it gives. `scratch` is empty before and
  // after.
  template <class SideAt, class Visit>
  void visit(Group group, const SideAt& side, const Visit& visit,
             std::vector<Group>& scratch) const;

 private:
  static constexpr std::uint32_t small = 8;
  static constexpr Group first_division = 0x80000000u;

  struct Division {
    Fork fork{};
    std::uint32_t shift = 0;  // members are in the parts by three bits of their number
    Group others = empty;
    std::array<Group, 8> parts{};

    Group& part_of(Side side) { return parts[side >> shift & 7u]; }
    Group& group_of(Side side) {
      return side == undecided || side == passed_by ? others : part_of(side);
    }
  };

  static bool is_division(Group group) { return group >= first_division && group != empty; }
  const Division& division(Group group) const { return divisions_[group - first_division]; }
  Division& division(Group group) { return divisions_[group - first_division]; }
  template <class Members>
  static void prepend(Group& group, ConditionId c, Members& members) {
    members.next(c) = group;
    group = c;
  }
  using Newest = std::array<ConditionId, small + 1>;
  template <class Members>
  static std::optional<Division> choose_division(const Newest& newest, const Members& members);

  std::vector<Division> divisions_;
};

template <class Members>
void ConditionGroups::add(Group& group, ConditionId c, Members members) {
  assert(c < first_division);
  Group* own = &group;
  while (is_division(*own)) {
    Division& passed = division(*own);
    own = &passed.group_of(members.side(c, passed.fork));
  }
  prepend(*own, c, members);
  Newest newest;
  std::uint32_t count = 0;
  ConditionId member = c;
  for (; member != no_condition && count < newest.size(); member = members.next(member)) {
    newest[count++] = member;
  }
  if (count < newest.size()) return;
  std::optional<Division> division = choose_division(newest, members);
  if (!division) return;
  member = *own;
  *own = first_division + static_cast<Group>(divisions_.size());
  while (member != no_condition) {
    const ConditionId next = members.next(member);
    prepend(division->group_of(members.side(member, division->fork)), member, members);
    member = next;
  }
  divisions_.push_back(*division);
}

// The fork at which the newest member parts from another one so that the fewest members stay
// together. None if all that is known of them agrees.
template <class Members>
std::optional<ConditionGroups::Division> ConditionGroups::choose_division(const Newest& newest,
                                                                          const Members& members) {
  std::optional<Division> best;
  std::uint32_t least = 0xFFFFFFFFu;
  for (const ConditionId other : newest) {
    if (other == newest.front()) continue;
    const std::optional<Fork> fork = members.find_fork(newest.front(), other);
    if (!fork) continue;
    Division division;
    division.fork = *fork;
    division.parts.fill(empty);
    const Side differ = members.side(newest.front(), *fork) ^ members.side(other, *fork);
    assert(differ != 0);
    division.shift = static_cast<std::uint32_t>(std::countr_zero(differ));
    std::array<std::uint32_t, 8> in_part{};
    std::uint32_t together = 0;
    for (const ConditionId c : newest) {
      const Side side = members.side(c, *fork);
      const bool is_other = side == undecided || side == passed_by;
      together += is_other ? small : 2 * in_part[side >> division.shift & 7u]++;
    }
    if (together < least) best = division;
    least = std::min(least, together);
  }
  return best;
}

template <class SideAt, class Visit>
void ConditionGroups::visit(Group group, const SideAt& side, const Visit& visit,
                            std::vector<Group>& scratch) const {
  assert(scratch.empty());
  scratch.push_back(group);
  while (!scratch.empty()) {
    Group rest = scratch.back();
    scratch.pop_back();
    while (is_division(rest)) {
      const Division& passed = division(rest);
      const Side own = side(passed.fork);
      if (own == undecided) {
        for (const Group part : passed.parts) {
          if (part != empty) scratch.push_back(part);
        }
      } else if (own != passed_by) {
        scratch.push_back(passed.parts[own >> passed.shift & 7u]);
      }
      rest = passed.others;
    }
    for (ConditionId c = rest; c != no_condition;) c = visit(c);
  }
}

}  // namespace vorel::unfolder
