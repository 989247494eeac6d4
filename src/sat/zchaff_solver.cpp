#include "sat/zchaff_solver.h"

#include <cassert>
#include <iostream>

#include "base/messages.h"
#include "base/run_state.h"
#include "base/sort_unique.h"

namespace vorel::sat {
namespace {

zchaff::Literal to_core(Lit lit) {
  assert(lit.is_variable());
  return zchaff::Literal::from_code(lit.code());
}

zchaff::Group to_core(ClauseGroup group) {
  return group == PermanentGroup ? zchaff::permanent
                                 : zchaff::Group{static_cast<std::uint32_t>(group)};
}

ModelValue from_core(zchaff::Truth truth) {
  switch (truth) {
    case zchaff::Truth::yes:
      return ModelValue::yes;
    case zchaff::Truth::no:
      return ModelValue::no;
    case zchaff::Truth::open:
      break;
  }
  return ModelValue::undefined;
}

}  // namespace

ZChaffSolver::ZChaffSolver(const zchaff::SolverCoreParams& params)
    : params_{params}, core_{std::make_unique<zchaff::SolverCore>(params)} {}

ZChaffSolver::~ZChaffSolver() = default;

void ZChaffSolver::reset() {
  core_ = std::make_unique<zchaff::SolverCore>(params_);
  state_ = State::fresh;
}

Var ZChaffSolver::new_var(bool no_branch) {
  if (state_ == State::solved) state_ = State::added;
  return Var{zchaff::index_of(core_->new_variable(!no_branch))};
}

ClauseGroup ZChaffSolver::new_group() {
  const std::optional<zchaff::Group> group = core_->new_group();
  return group ? ClauseGroup{static_cast<std::int32_t>(zchaff::index_of(*group))} : removed_group;
}

void ZChaffSolver::delete_group(ClauseGroup group) {
  if (core_->delete_group(to_core(group)) && state_ < State::deleted) state_ = State::deleted;
}

void ZChaffSolver::add_clause(std::span<const Lit> lits, ClauseGroup group) {
  if (!core_->is_alive(to_core(group))) {
    state_ = State::failed;  // the error was reported when the group was asked for
    return;
  }
  if (state_ == State::solved) state_ = State::added;
  clause_.clear();
  for (const Lit lit : lits) clause_.push_back(to_core(lit));
  core_->add_clause(clause_, to_core(group));
}

// Additions and deletions take back themselves what they must of the last search.
SolveStatus ZChaffSolver::solve(bool, bool) {
  if (state_ == State::failed) return SolveStatus::error;
  if (state_ == State::solved) {
    if (base::verbosity() >= 1) base::print_formatted(std::cerr, "\nSolving the same SAT instance");
    core_->reset_search();
  }
  const zchaff::Outcome outcome = core_->solve();
  state_ = State::solved;
  switch (outcome) {
    case zchaff::Outcome::unsatisfiable:
      return SolveStatus::unsat;
    case zchaff::Outcome::satisfiable:
      return SolveStatus::sat;
    case zchaff::Outcome::timeout:
    case zchaff::Outcome::memory_out:
      break;
  }
  state_ = State::failed;
  return outcome == zchaff::Outcome::timeout ? SolveStatus::timeout : SolveStatus::memory;
}

SolveStatus ZChaffSolver::solve_assuming(std::span<const Lit> assumptions,
                                         std::uint64_t max_conflicts) {
  failed_.clear();
  if (state_ == State::failed) return SolveStatus::error;
  clause_.clear();
  for (const Lit lit : assumptions) clause_.push_back(to_core(lit));
  const zchaff::Outcome outcome = core_->solve(clause_, max_conflicts);
  state_ = State::added;  // the next solve may be another one
  switch (outcome) {
    case zchaff::Outcome::satisfiable:
      return SolveStatus::sat;
    case zchaff::Outcome::timeout:
      return SolveStatus::timeout;
    case zchaff::Outcome::unsatisfiable:
      for (const zchaff::Literal literal : core_->failed_assumptions())
        failed_.push_back(Lit::from_code(literal.code()));
      return SolveStatus::unsat;
    case zchaff::Outcome::memory_out:
      break;
  }
  state_ = State::failed;
  return SolveStatus::memory;
}

ModelValue ZChaffSolver::value(Var variable) const {
  return from_core(core_->value(zchaff::Variable{static_cast<std::uint32_t>(variable)}));
}

void ZChaffSolver::visit_clauses(const ClauseVisitor& visit) const {
  Lits copy;
  core_->visit_given([&](std::span<const zchaff::Literal> clause) {
    copy.clear();
    for (const zchaff::Literal literal : clause) copy.push_back(Lit::from_code(literal.code()));
    visit(copy);
  });
}

Lits ZChaffSolver::unit_literals() const {
  Lits units;
  visit_clauses([&](std::span<const Lit> clause) {
    if (clause.size() == 1) units.push_back(clause[0]);
  });
  base::sort_unique(units);
  return units;
}

std::uint32_t ZChaffSolver::num_vars() const { return core_->variable_count(); }
std::uint64_t ZChaffSolver::num_clauses() const { return core_->clause_count(); }
std::uint64_t ZChaffSolver::num_literals() const { return core_->literal_count(); }
std::uint64_t ZChaffSolver::num_conflicts() const { return core_->conflict_count(); }

}  // namespace vorel::sat
