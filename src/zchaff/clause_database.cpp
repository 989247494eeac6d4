#include "zchaff/clause_database.h"

#include <algorithm>

namespace vorel::zchaff {
namespace {

// A fact that lasts as long as the clause makes it superfluous.
bool is_satisfied_for_good(const Clause& clause, const Assignment& assignment) {
  return std::ranges::any_of(clause.literals(), [&](Literal literal) {
    return assignment.value(literal) == Truth::yes &&
           assignment.fact_groups(literal.variable()).is_subset_of(clause.groups());
  });
}

}  // namespace

ClauseRef ClauseDatabase::add(std::span<const Literal> literals, GroupSet groups, bool learnt,
                              std::uint32_t glue) {
  const ClauseRef ref = arena_.add(literals, groups, learnt, glue);
  if (ref == no_clause) return no_clause;
  watches_.add(ref, arena_[ref]);
  lists_[index_of(groups_.youngest_of(groups))].push_back(ref);
  return ref;
}

ClauseRef ClauseDatabase::add_given(std::span<const Literal> literals, GroupSet groups) {
  const ClauseRef ref = add(literals, groups, false, 0);
  if (ref == no_clause) return no_clause;
  ++given_;
  given_literals_ += literals.size();
  return ref;
}

ClauseRef ClauseDatabase::add_learnt(std::span<const Literal> literals, GroupSet groups,
                                     std::uint32_t glue) {
  const ClauseRef ref = add(literals, groups, true, glue);
  if (ref != no_clause) ++learnt_;
  return ref;
}

void ClauseDatabase::drop(ClauseRef ref) {
  Clause& clause = arena_[ref];
  if (clause.is_learnt()) {
    --learnt_;
  } else {
    --given_;
    given_literals_ -= clause.size();
  }
  watches_.note_garbage(clause);
  arena_.mark_garbage(ref);
}

void ClauseDatabase::retract(Group group) {
  for (std::uint32_t number = 1; number <= max_groups; ++number) {
    const Group listed{number};
    if (!groups_.is_alive(listed) || groups_.is_younger(group, listed)) continue;
    std::erase_if(lists_[number], [&](ClauseRef ref) {
      if (!arena_[ref].groups().contains(group)) return false;
      drop(ref);
      return true;
    });
  }
  watches_.clean(arena_);
  collect_garbage();
}

void ClauseDatabase::drop_satisfied(const Assignment& assignment) {
  for (const std::vector<ClauseRef>& list : lists_)
    for (const ClauseRef ref : list)
      if (arena_[ref].is_learnt() && is_satisfied_for_good(arena_[ref], assignment)) drop(ref);
}

// Clauses that were of use pay for staying. None is kept for good: over many solves those would
// pile up.
void ClauseDatabase::collect_candidates() {
  candidates_.clear();
  for (const std::vector<ClauseRef>& list : lists_)
    for (const ClauseRef ref : list) {
      Clause& clause = arena_[ref];
      if (!clause.is_learnt() || clause.is_garbage()) continue;
      if (clause.credit() > 0) {
        clause.set_credit(clause.credit() - 1);
      } else {
        candidates_.push_back(ref);
      }
    }
}

void ClauseDatabase::sweep() {
  for (std::vector<ClauseRef>& list : lists_)
    std::erase_if(list, [&](ClauseRef ref) { return arena_[ref].is_garbage(); });
  watches_.clean(arena_);
  collect_garbage();
}

void ClauseDatabase::reduce(std::uint32_t percent, const Assignment& assignment) {
  assert(assignment.level() == 0 && percent <= 100);
  drop_satisfied(assignment);
  collect_candidates();
  const auto worse = [&](ClauseRef a, ClauseRef b) {
    const Clause &first = arena_[a], &second = arena_[b];
    if (first.glue() != second.glue()) return first.glue() > second.glue();
    return first.size() > second.size();
  };
  std::ranges::stable_sort(candidates_, worse);
  candidates_.resize(candidates_.size() * percent / 100);
  for (const ClauseRef ref : candidates_) drop(ref);
  sweep();
}

// Without memory for a second block the garbage stays where it is.
void ClauseDatabase::collect_garbage() {
  if (!arena_.is_worth_collecting() || !arena_.start_moving()) return;
  for (std::vector<ClauseRef>& list : lists_)
    for (ClauseRef& ref : list) ref = arena_.moved(ref);
  watches_.move(arena_);
  arena_.finish_moving();
}

}  // namespace vorel::zchaff
