#include "zchaff/propagator.h"

#include <algorithm>

namespace vorel::zchaff {

GroupSet groups_of_fact(const Clause& clause, const Assignment& assignment, const Literal* except) {
  GroupSet groups = clause.groups();
  for (const Literal literal : clause.literals()) {
    if (except != nullptr && literal == *except) continue;
    assert(assignment.value(literal) == Truth::no && assignment.level(literal.variable()) == 0);
    groups |= assignment.fact_groups(literal.variable());
  }
  return groups;
}

inline void Propagator::imply(Literal literal, ClauseRef reason) {
  if (assignment_.level() > 0) {
    assignment_.assign(literal, reason);
  } else {
    assignment_.assign_fact(literal, groups_of_fact(arena_[reason], assignment_, &literal));
  }
}

// One of the literals that are not watched takes the place of the falsified one, unless all of them
// are false.
inline bool Propagator::watch_another(Clause& clause, ClauseRef ref, Literal falsified,
                                      Literal other) {
  Literal* const literals = clause.begin();
  const auto is_false = [this](Literal literal) { return assignment_.value(literal) == Truth::no; };
  Literal* const start = literals + clause.search_position();
  Literal* found = std::find_if_not(start, clause.end(), is_false);
  if (found == clause.end()) {
    found = std::find_if_not(literals + Clause::first_unwatched, start, is_false);
    if (found == start) return false;
  }
  clause.set_search_position(static_cast<std::uint32_t>(found - literals));
  literals[0] = other;
  literals[1] = *found;
  *found = falsified;
  watches_.of(literals[1]).emplace_back(ref, other, false);
  return true;
}

ClauseRef Propagator::visit(Literal falsified) {
  std::vector<Watch>& list = watches_.of(falsified);
  const Watch* next = list.data();
  const Watch* const end = next + list.size();
  Watch* kept = list.data();
  ClauseRef conflict = no_clause;
  while (next != end && conflict == no_clause) {
    const Watch watch = *next++;
    *kept++ = watch;
    Literal implied = watch.blocker();
    Truth value = assignment_.value(implied);
    if (value == Truth::yes) continue;
    if (!watch.is_binary()) {
      Clause& clause = arena_[watch.clause()];
      implied = clause[0] == falsified ? clause[1] : clause[0];
      value = assignment_.value(implied);
      if (value == Truth::yes) {
        kept[-1] = Watch(watch.clause(), implied, false);
        continue;
      }
      if (watch_another(clause, watch.clause(), falsified, implied)) {
        --kept;
        continue;
      }
    }
    if (value == Truth::no) {
      conflict = watch.clause();
    } else {
      imply(implied, watch.clause());
    }
  }
  kept = std::copy(next, end, kept);
  list.resize(static_cast<std::size_t>(kept - list.data()), Watch(no_clause, falsified, false));
  return conflict;
}

ClauseRef Propagator::propagate() {
  ClauseRef conflict = no_clause;
  const std::size_t start = next_;
  while (conflict == no_clause && next_ < assignment_.trail().size())
    conflict = visit(~assignment_.trail()[next_++]);
  propagations_ += next_ - start;
  return conflict;
}

}  // namespace vorel::zchaff
