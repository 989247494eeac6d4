// The search of zchaff/solver_core.h: decisions, learning, restarts.
#include <algorithm>

#include "base/clock.h"
#include "zchaff/solver_core.h"

namespace vorel::zchaff {
namespace {

constexpr std::uint64_t no_deadline = ~std::uint64_t{0};
constexpr std::uint64_t conflicts_per_look = 64;  // at the clock

std::uint64_t deadline_in(double seconds) {
  return seconds > 0 ? base::ticks_now() + static_cast<std::uint64_t>(seconds * 1e9) : no_deadline;
}

}  // namespace

// False when memory does not suffice.
bool SolverCore::learn_from(ClauseRef conflict) {
  const LearntClause& learnt = analyzer_.analyze(conflict);
  for (const Variable v : analyzer_.involved()) order_.bump(v);
  order_.decay();
  policy_.note_conflict(learnt.glue);
  if (learnt.literals.size() == 1) {
    add_unit(learnt.literals[0], learnt.groups, true);
    return true;
  }
  backtrack(learnt.back_level);
  const ClauseRef ref = database_.add_learnt(learnt.literals, learnt.groups, learnt.glue);
  if (ref == no_clause) return false;
  assignment_.assign(learnt.literals[0], ref);
  return true;
}

// False when no variable is left to decide on. Mostly all are true or false then; to take them out
// of the order to see that would only have them put back before the next solve.
bool SolverCore::decide() {
  if (assignment_.trail().size() == variable_count()) return false;
  while (!order_.empty() && !assignment_.is_open(order_.top())) order_.pop();
  if (order_.empty()) return false;
  const Variable variable = order_.top();
  order_.pop();
  ++stats_.decisions;
  assignment_.open_level();
  assignment_.assign(assignment_.preferred(variable), no_clause);
  return true;
}

// Decisions that would be taken again are kept [RTH-2011].
std::uint32_t SolverCore::reusable_level() {
  while (!order_.empty() && !assignment_.is_open(order_.top())) order_.pop();
  if (order_.empty()) return assignment_.level();
  const double next = order_.activity(order_.top());
  std::uint32_t level = 0;
  while (level < assignment_.level() &&
         order_.activity(assignment_.decision(level + 1).variable()) > next)
    ++level;
  return level;
}

void SolverCore::restart() {
  ++stats_.restarts;
  policy_.note_restart();
  if (policy_.is_reduction_due()) {
    reduce();
  } else {
    const std::uint32_t assumptions = assumed_ == assumptions_.size() ? assumption_levels_ : 0;
    backtrack(std::max(reusable_level(), assumptions));
  }
}

void SolverCore::reduce() {
  backtrack(0);
  database_.reduce(params_.reduction_percent, assignment_);
  policy_.note_reduction();
}

// Assumptions are the first decisions, one after the other. False when one of them cannot be true.
bool SolverCore::decide_assumptions() {
  for (; assumed_ < assumptions_.size(); ++assumed_) {
    const Literal literal = assumptions_[assumed_];
    if (assignment_.value(literal) == Truth::yes) continue;
    if (assignment_.value(literal) == Truth::no) {
      analyzer_.decisions_against(literal, failed_);
      return false;
    }
    assignment_.open_level();
    assignment_.assign(literal, no_clause);
    return true;
  }
  assumption_levels_ = assignment_.level();
  return true;
}

Outcome SolverCore::search(std::uint64_t deadline, std::uint64_t last_conflict) {
  if (out_of_memory_) return Outcome::memory_out;
  while (!refuted_by_) {
    if (assignment_.level() == 0) settle();
    if (refuted_by_) break;
    const ClauseRef conflict = propagator_.propagate();
    if (conflict != no_clause) {
      if (!learn_from(conflict)) return Outcome::memory_out;
      if (deadline != no_deadline && policy_.conflicts() % conflicts_per_look == 0 &&
          base::ticks_now() > deadline)
        return Outcome::timeout;
      if (policy_.conflicts() >= last_conflict) return Outcome::timeout;
    } else if (policy_.is_restart_due() || policy_.is_reduction_due()) {
      restart();
    } else if (assumed_ < assumptions_.size()) {
      if (!decide_assumptions()) return Outcome::unsatisfiable;
    } else if (!decide()) {
      return Outcome::satisfiable;
    }
  }
  return Outcome::unsatisfiable;
}

Outcome SolverCore::solve(std::span<const Literal> assumptions, std::uint64_t max_conflicts) {
  ++stats_.solves;
  policy_.note_solve(database_.given_count());
  model_.clear();
  failed_.clear();
  if (!assumptions.empty()) backtrack(0);  // what was decided may be against them
  assumptions_.assign(assumptions.begin(), assumptions.end());
  assumed_ = 0;
  assumption_levels_ = 0;
  const std::uint64_t room = no_conflict_limit - policy_.conflicts();
  const Outcome outcome =
      search(deadline_in(params_.time_limit), policy_.conflicts() + std::min(max_conflicts, room));
  if (outcome == Outcome::satisfiable) {
    model_ = assignment_.values();
  } else {
    backtrack(0);
  }
  return outcome;
}

}  // namespace vorel::zchaff
