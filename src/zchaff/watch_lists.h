// zchaff/watch_lists.h - for each literal, the clauses to look at when it becomes false [MMZ-2001].
#pragma once

#include <vector>

#include "zchaff/clause_arena.h"

namespace vorel::zchaff {

// A clause and one of its other literals: while that is true, the clause need not be looked at. In
// a binary clause it is the other literal, so the clause is never looked at.
class Watch {
 public:
  Watch(ClauseRef clause, Literal blocker, bool binary)
      : clause_{clause}, packed_{blocker.code() << 1 | (binary ? 1u : 0u)} {}
  ClauseRef clause() const { return clause_; }
  Literal blocker() const { return Literal::from_code(packed_ >> 1); }
  bool is_binary() const { return (packed_ & 1u) != 0; }

 private:
  ClauseRef clause_;
  std::uint32_t packed_;
};

class WatchLists {
 public:
  void add_variable() {
    lists_.resize(lists_.size() + 2);
    dirty_.resize(dirty_.size() + 2);
  }
  std::vector<Watch>& of(Literal literal) { return lists_[literal.code()]; }

  // Enters a clause under its first two literals.
  void add(ClauseRef ref, Clause& clause) {
    add(clause[0], Watch(ref, clause[1], clause.is_binary()));
    add(clause[1], Watch(ref, clause[0], clause.is_binary()));
  }
  // Notes that a clause became garbage; it leaves its lists with the next clean().
  void note_garbage(Clause& clause) {
    mark_dirty(clause[0]);
    mark_dirty(clause[1]);
  }
  void clean(const ClauseArena& arena);
  // All clauses move; none is garbage.
  void move(ClauseArena& arena);

 private:
  // As many as fit into the smallest block that allocators hand out.
  static constexpr std::size_t first_capacity = 3;

  void add(Literal literal, Watch watch) {
    std::vector<Watch>& list = of(literal);
    if (list.capacity() == 0) list.reserve(first_capacity);
    list.push_back(watch);
  }
  void mark_dirty(Literal literal) {
    if (dirty_[literal.code()] != 0) return;
    dirty_[literal.code()] = 1;
    dirty_literals_.push_back(literal);
  }

  std::vector<std::vector<Watch>> lists_;  // by the codes of literals
  std::vector<std::uint8_t> dirty_;        // the list holds garbage
  std::vector<Literal> dirty_literals_;
};

}  // namespace vorel::zchaff
