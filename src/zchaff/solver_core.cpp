#include "zchaff/solver_core.h"

#include <algorithm>

#include "base/sort_unique.h"

namespace vorel::zchaff {

SolverCore::SolverCore(const SolverCoreParams& params)
    : params_{params},
      database_{groups_, params.memory_limit},
      propagator_{database_, assignment_},
      analyzer_{database_.arena(), assignment_},
      policy_{params.restart_margin_percent, params.first_restart, params.reduction_interval},
      empty_clauses_(max_groups + 1) {}

Variable SolverCore::new_variable(bool may_branch) {
  const Variable variable{variable_count()};
  assert(index_of(variable) < max_variables);
  assignment_.add_variable();
  database_.watches().add_variable();
  analyzer_.add_variable();
  order_.add_variable(may_branch);
  return variable;
}

std::optional<Group> SolverCore::new_group() { return groups_.allocate(); }

void SolverCore::refute(GroupSet groups) {
  // What is refuted for good stays so.
  if (!refuted_by_ || groups.empty()) refuted_by_ = groups;
}

// At level 0: what follows from the facts so far. Done before a retractable fact is added, so that
// what does not need it is not held to depend on it.
void SolverCore::settle() {
  if (refuted_by_) return;
  const ClauseRef conflict = propagator_.propagate();
  if (conflict != no_clause)
    refute(groups_of_fact(database_.arena()[conflict], assignment_, nullptr));
}

void SolverCore::assert_fact(Literal literal, GroupSet groups) {
  assert(assignment_.level() == 0);
  if (!groups.empty()) settle();
  switch (assignment_.value(literal)) {
    case Truth::open:
      assignment_.assign_fact(literal, groups);
      break;
    case Truth::no:
      groups |= assignment_.fact_groups(literal.variable());
      refute(groups);
      break;
    case Truth::yes:
      break;
  }
}

void SolverCore::add_unit(Literal literal, GroupSet groups, bool learnt) {
  backtrack(0);
  units_.push_back({literal, groups, learnt});
  assert_fact(literal, groups);
}

// Sorts the scratch clause and removes duplicates. False if it is always true.
bool SolverCore::normalise(std::span<const Literal> literals) {
  clause_.assign(literals.begin(), literals.end());
  base::sort_unique(clause_);
  return std::ranges::adjacent_find(clause_, [](Literal a, Literal b) { return a == ~b; }) ==
         clause_.end();
}

void SolverCore::add_clause(std::span<const Literal> literals, Group group) {
  assert(groups_.is_alive(group));
  if (!normalise(literals)) return;
  assert(clause_.empty() || index_of(clause_.back().variable()) < variable_count());
  const GroupSet groups(group);
  if (clause_.empty()) {
    ++empty_clauses_[index_of(group)];
    refute(groups);
  } else if (clause_.size() == 1) {
    add_unit(clause_[0], groups, false);
  } else {
    add_long_clause(groups);
  }
}

// Takes back what keeps a clause from being watched under its literals least or last false: the
// second one, if it is false, must have a partner that has been true for as long.
void SolverCore::make_room_for(Literal first, Literal second) {
  if (assignment_.value(second) != Truth::no) return;
  const std::uint32_t level = assignment_.level(second.variable());
  const bool has_partner =
      assignment_.value(first) == Truth::yes && assignment_.level(first.variable()) <= level;
  if (!has_partner) backtrack(level == 0 ? 0 : level - 1);
}

void SolverCore::add_long_clause(GroupSet groups) {
  // The last two to become false come first.
  const auto height = [this](Literal literal) {
    return assignment_.value(literal) == Truth::no ? assignment_.level(literal.variable())
                                                   : 0xFFFFFFFFu;
  };
  std::ranges::partial_sort(clause_, clause_.begin() + 2, std::ranges::greater{}, height);
  make_room_for(clause_[0], clause_[1]);
  const ClauseRef ref = database_.add_given(clause_, groups);
  if (ref == no_clause) {
    out_of_memory_ = true;
    return;
  }
  if (assignment_.value(clause_[1]) != Truth::no) return;
  if (assignment_.value(clause_[0]) == Truth::yes) return;
  // All but the first literal are false for ever, or until a group goes.
  assert(assignment_.level() == 0);
  const Clause& clause = database_.arena()[ref];
  if (assignment_.value(clause_[0]) == Truth::no) {
    refute(groups_of_fact(clause, assignment_, nullptr));
  } else {
    assert_fact(clause_[0], groups_of_fact(clause, assignment_, &clause_[0]));
  }
}

// Some facts were retracted: all that the rest and the units imply.
void SolverCore::assert_again() {
  propagator_.start_again();
  settle();
  for (const Unit& unit : units_) assert_fact(unit.literal, unit.groups);
  for (std::uint32_t i = 0; i < empty_clauses_.size(); ++i)
    if (empty_clauses_[i] > 0) refute(GroupSet(Group{i}));
}

bool SolverCore::delete_group(Group group) {
  if (group != permanent && groups_.is_alive(group)) {
    backtrack(0);
    database_.retract(group);
    std::erase_if(units_, [&](const Unit& unit) { return unit.groups.contains(group); });
    empty_clauses_[index_of(group)] = 0;
    bool changed = assignment_.retract(group, [this](Variable v) { order_.restore(v); });
    if (refuted_by_ && refuted_by_->contains(group)) {
      refuted_by_.reset();
      changed = true;
    }
    if (changed) assert_again();
  }
  return groups_.release(group);
}

void SolverCore::backtrack(std::uint32_t level) {
  assignment_.backtrack(level, [this](Variable v) { order_.restore(v); });
  propagator_.retreat();
  assumed_ = 0;
}

void SolverCore::reset_search() { backtrack(0); }

Truth SolverCore::value(Variable variable) const {
  const std::size_t code = Literal(variable, false).code();
  return code < model_.size() ? model_[code] : Truth::open;
}

std::uint64_t SolverCore::clause_count() const {
  std::uint64_t count = database_.given_count();
  for (const std::uint64_t empty : empty_clauses_) count += empty;
  return count + static_cast<std::uint64_t>(std::ranges::count(units_, false, &Unit::learnt));
}

std::uint64_t SolverCore::literal_count() const {
  return database_.given_literals() +
         static_cast<std::uint64_t>(std::ranges::count(units_, false, &Unit::learnt));
}

SolverCoreStats SolverCore::stats() const {
  SolverCoreStats stats = stats_;
  stats.conflicts = policy_.conflicts();
  stats.reductions = policy_.reductions();
  stats.propagations = propagator_.propagations();
  stats.removed_literals = analyzer_.removed_literals();
  stats.learnt_clauses = database_.learnt_count() + static_cast<std::uint64_t>(std::ranges::count(
                                                        units_, true, &Unit::learnt));
  return stats;
}

}  // namespace vorel::zchaff
