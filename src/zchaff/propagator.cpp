#include "zchaff/propagator.h"

#include <algorithm>

namespace vorel::zchaff {
namespace {

constexpr std::uint32_t most_short = 8;  // literals

}  // namespace

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

// The first literal from `begin` that is not false, or `end`.
inline std::uint32_t Propagator::skip_false(Clause& clause, std::uint32_t begin,
                                            std::uint32_t end) const {
  while (begin < end && assignment_.value(clause[begin]) == Truth::no) ++begin;
  return begin;
}

// A literal that is not watched and not false, or the size of the clause. To remember where the
// last one was takes longer than to look at the few literals of a short clause.
inline std::uint32_t Propagator::find_not_false(Clause& clause) {
  const std::uint32_t size = clause.size();
  if (size <= most_short) return skip_false(clause, Clause::first_unwatched, size);
  const std::uint32_t start = clause.search_position();
  std::uint32_t found = skip_false(clause, start, size);
  if (found == size) {
    found = skip_false(clause, Clause::first_unwatched, start);
    if (found == start) return size;
  }
  clause.set_search_position(found);
  return found;
}

// One of the literals that are not watched takes the place of the falsified one, unless all of them
// are false.
inline bool Propagator::watch_another(Clause& clause, ClauseRef ref, Literal falsified,
                                      Literal other) {
  const std::uint32_t found = find_not_false(clause);
  if (found == clause.size()) return false;
  const Literal watched = clause[found];
  clause[0] = other;
  clause[1] = watched;
  clause[found] = falsified;
  watches_.of(watched).emplace_back(ref, other, false);
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
      // The other of the two, without a branch that would be foretold wrongly half of the time.
      implied = Literal::from_code(clause[0].code() ^ clause[1].code() ^ falsified.code());
      if (implied != watch.blocker()) {
        value = assignment_.value(implied);
        if (value == Truth::yes) {
          kept[-1] = Watch(watch.clause(), implied, false);
          continue;
        }
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
