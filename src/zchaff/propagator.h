// zchaff/propagator.h - what follows from the clauses and what is true already.
// Two watched literals per clause [MMZ-2001]: a clause is looked at when one of them becomes false,
// and then either watches another literal, or implies the other one, or is a conflict.
// Between calls, once all of the trail is propagated: a false watched literal has a partner that
// became true at the same level or below.
#pragma once

#include "zchaff/assignment.h"
#include "zchaff/clause_database.h"

namespace vorel::zchaff {

class Propagator {
 public:
  Propagator(ClauseDatabase& database, Assignment& assignment)
      : arena_{database.arena()}, watches_{database.watches()}, assignment_{assignment} {}

  // A clause all of whose literals are false, or no_clause.
  ClauseRef propagate();
  // The trail became shorter.
  void retreat() { next_ = std::min(next_, assignment_.trail().size()); }
  // Facts were retracted: what they satisfied may imply something now.
  void start_again() { next_ = 0; }

  std::uint64_t propagations() const { return propagations_; }

 private:
  ClauseRef visit(Literal falsified);
  std::uint32_t skip_false(Clause& clause, std::uint32_t begin, std::uint32_t end) const;
  std::uint32_t find_not_false(Clause& clause);
  bool watch_another(Clause& clause, ClauseRef ref, Literal falsified, Literal other);
  void imply(Literal literal, ClauseRef reason);

  ClauseArena& arena_;
  WatchLists& watches_;
  Assignment& assignment_;
  std::size_t next_ = 0;  // in the trail: the first literal that is not propagated
  std::uint64_t propagations_ = 0;
};

// The groups on which the clause and the facts that falsify its literals depend, `except` left out.
GroupSet groups_of_fact(const Clause& clause, const Assignment& assignment, const Literal* except);

}  // namespace vorel::zchaff
