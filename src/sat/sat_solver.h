// sat/sat_solver.h - the interface behind which the SAT solvers stand.
// Here:      variables, retractable clause groups, a solve call, the model, the clause database.
// Not here:  gates and clause normalisation (sat/cnf_formula.h).
// Used from one thread. Between solves any mix of the changing operations is allowed.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "sat/literal.h"

namespace vorel::sat {

enum class SolveStatus : std::uint8_t { unsat = 0, sat = 1, timeout = 2, memory = 3, error = 4 };

class SatSolver {
 public:
  virtual ~SatSolver() = default;

  // `no_branch`: the solver never decides on the variable.
  virtual Var new_var(bool no_branch) = 0;
  // Exempts the variable from elimination by preprocessing, or ends that.
  virtual void freeze(Var variable, bool value) = 0;
  // Ends the temporary freezing of the variables that a solve froze.
  virtual void thaw_extra() = 0;

  virtual ClauseGroup new_group() = 0;
  // Retracts all clauses of the group.
  virtual void delete_group(ClauseGroup group) = 0;
  // An empty clause makes the group, or the whole formula if it is permanent, unsatisfiable.
  virtual void add_clause(std::span<const Lit> lits, ClauseGroup group) = 0;

  // Simplifies the clause database now.
  virtual void preprocess(bool turn_off) = 0;

  using ClauseVisitor = std::function<void(std::span<const Lit>)>;
  // The instance that the next solve answers: every clause, units included. Where groups are
  // emulated, the assumptions stand in it as unit clauses, so that it has the same answer.
  virtual void visit_clauses(const ClauseVisitor& visit) const = 0;
  // All literals fixed by unit clauses that were added, sorted, without duplicates; empty where
  // the back end does not keep them.
  virtual Lits unit_literals() const = 0;

  // Back to an empty solver without variables, clauses and groups.
  virtual void reset() = 0;
  virtual SolveStatus solve(bool simplify, bool turn_off_simplification) = 0;
  // Looks for a model in which the assumptions are true, too; ends with timeout after so many
  // conflicts.
  virtual SolveStatus solve_assuming(std::span<const Lit> assumptions,
                                     std::uint64_t max_conflicts) = 0;
  // After solve_assuming() gave unsat: assumptions that cannot be true together, each once, in no
  // particular order; none if there is no model at all.
  virtual const Lits& failed_assumptions() const = 0;

  // The last model.
  virtual ModelValue value(Var variable) const = 0;

  virtual std::uint32_t num_vars() const = 0;
  virtual std::uint64_t num_clauses() const = 0;
  virtual std::uint64_t num_literals() const = 0;
  // Of all solves since the last reset.
  virtual std::uint64_t num_conflicts() const = 0;
};

}  // namespace vorel::sat
