// zchaff/assignment.h - what is true at the moment, since when, and why.
// Here:      values, the trail, decision levels, reasons, the groups that facts depend on.
// Not here:  drawing conclusions (zchaff/propagator.h).
// A fact is a literal that is true at level 0: it follows from the clauses without any decision,
// and lasts as long as the groups that it was derived from.
#pragma once

#include <vector>

#include "zchaff/clause_arena.h"

namespace vorel::zchaff {

class Assignment {
 public:
  void add_variable();
  std::uint32_t variable_count() const { return static_cast<std::uint32_t>(places_.size()); }

  Truth value(Literal literal) const { return values_[literal.code()]; }
  bool is_open(Variable v) const { return value(Literal(v, false)) == Truth::open; }
  const std::vector<Truth>& values() const { return values_; }  // by the codes of literals

  // Literals in the order in which they became true.
  const std::vector<Literal>& trail() const { return trail_; }
  std::uint32_t level() const { return static_cast<std::uint32_t>(starts_.size()); }
  Literal decision(std::uint32_t level) const { return trail_[starts_[level - 1]]; }

  // Of an assigned variable.
  std::uint32_t level(Variable v) const { return places_[index_of(v)].level; }
  // Of a variable above level 0; no_clause: a decision.
  ClauseRef reason(Variable v) const { return places_[index_of(v)].reason; }
  // Of a variable at level 0.
  GroupSet fact_groups(Variable v) const { return fact_groups_[index_of(v)]; }
  // With the sign that the variable had last [PD-2007].
  Literal preferred(Variable v) const { return Literal(v, negated_before_[index_of(v)] != 0); }

  void open_level() { starts_.push_back(static_cast<std::uint32_t>(trail_.size())); }
  void assign(Literal literal, ClauseRef reason) {
    assert(level() > 0);
    places_[index_of(literal.variable())] = {level(), reason};
    enter(literal);
  }
  void assign_fact(Literal literal, GroupSet groups) {
    assert(level() == 0);
    places_[index_of(literal.variable())] = {0, no_clause};
    fact_groups_[index_of(literal.variable())] = groups;
    enter(literal);
  }

  // Takes back the levels above `level`; tells each variable that becomes open.
  template <class Visit>
  void backtrack(std::uint32_t level, const Visit& opened) {
    if (level >= starts_.size()) return;
    for (std::size_t i = trail_.size(); i > starts_[level]; --i) {
      leave(trail_[i - 1]);
      opened(trail_[i - 1].variable());
    }
    trail_.resize(starts_[level]);
    starts_.resize(level);
  }
  // Takes back the facts that depend on the group; at level 0. True if there were any.
  template <class Visit>
  bool retract(Group group, const Visit& opened) {
    assert(level() == 0);
    const std::size_t before = trail_.size();
    std::erase_if(trail_, [&](Literal fact) {
      if (!fact_groups(fact.variable()).contains(group)) return false;
      leave(fact);
      opened(fact.variable());
      return true;
    });
    return trail_.size() < before;
  }

 private:
  struct Place {
    std::uint32_t level;
    ClauseRef reason;
  };

  void enter(Literal literal) {
    assert(value(literal) == Truth::open);
    values_[literal.code()] = Truth::yes;
    values_[(~literal).code()] = Truth::no;
    trail_.push_back(literal);
  }
  void leave(Literal literal) {
    values_[literal.code()] = values_[(~literal).code()] = Truth::open;
    negated_before_[index_of(literal.variable())] = literal.negated() ? 1 : 0;
  }

  std::vector<Truth> values_;
  std::vector<Place> places_;
  std::vector<GroupSet> fact_groups_;
  std::vector<std::uint8_t> negated_before_;
  std::vector<Literal> trail_;
  std::vector<std::uint32_t> starts_;  // in the trail, of the levels from 1
};

}  // namespace vorel::zchaff
