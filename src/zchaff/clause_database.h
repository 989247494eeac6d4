// zchaff/clause_database.h - all clauses of two and more literals, given and learnt.
// Here:      the clauses by the groups they depend on, retraction, reduction, garbage collection.
// Not here:  units and empty clauses (zchaff/solver_core.h), learning (zchaff/conflict_analyzer.h).
//
// A clause is listed under the youngest group that it depends on. A group that goes is nearly
// always among the youngest, so little else than its own clauses is looked at.
#pragma once

#include <array>
#include <vector>

#include "zchaff/assignment.h"
#include "zchaff/clause_arena.h"
#include "zchaff/group_table.h"
#include "zchaff/watch_lists.h"

namespace vorel::zchaff {

class ClauseDatabase {
 public:
  // `memory_limit`: bytes of all clauses.
  ClauseDatabase(const GroupTable& groups, std::uint64_t memory_limit)
      : groups_{groups}, arena_{memory_limit} {}

  ClauseArena& arena() { return arena_; }
  WatchLists& watches() { return watches_; }

  // The first two literals are watched. no_clause when memory does not suffice.
  ClauseRef add_given(std::span<const Literal> literals, GroupSet groups);
  ClauseRef add_learnt(std::span<const Literal> literals, GroupSet groups, std::uint32_t glue);

  // The rest needs decision level 0, where no clause is the reason of anything.

  // Drops the clauses that depend on a group, which is still alive.
  void retract(Group group);
  // Drops learnt clauses: those that lasting facts satisfy, and of those without recent use
  // `percent` of a hundred, by glue [AS-2009].
  void reduce(std::uint32_t percent, const Assignment& assignment);

  std::uint64_t given_count() const { return given_; }
  std::uint64_t given_literals() const { return given_literals_; }
  std::uint64_t learnt_count() const { return learnt_; }

  template <class Visit>
  void visit(const Visit& visit) const {
    for (const std::vector<ClauseRef>& list : lists_)
      for (const ClauseRef ref : list) visit(arena_[ref]);
  }

 private:
  ClauseRef add(std::span<const Literal> literals, GroupSet groups, bool learnt,
                std::uint32_t glue);
  void drop(ClauseRef ref);
  void drop_satisfied(const Assignment& assignment);
  void collect_candidates();
  void sweep();
  void collect_garbage();

  const GroupTable& groups_;
  ClauseArena arena_;
  WatchLists watches_;
  std::array<std::vector<ClauseRef>, max_groups + 1> lists_;  // by the youngest group
  std::uint64_t given_ = 0, given_literals_ = 0, learnt_ = 0;
  std::vector<ClauseRef> candidates_;  // scratch
};

}  // namespace vorel::zchaff
