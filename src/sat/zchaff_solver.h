// sat/zchaff_solver.h - the core with native clause groups behind the interface of the SAT solvers.
// Here:      the translation of calls and answers, and what the core must be told between solves.
// Not here:  the core itself (zchaff/solver_core.h).
//
// At most 32 groups are alive at a time, numbered from 1. A group too many is an error, for which
// removed_group is returned; clauses for a group that is not alive cannot be kept, and make every
// further solve fail.
#pragma once

#include <memory>
#include <vector>

#include "sat/sat_solver.h"
#include "zchaff/solver_core.h"

namespace vorel::sat {

class ZChaffSolver final : public SatSolver {
 public:
  explicit ZChaffSolver(const zchaff::SolverCoreParams& params = {});
  ~ZChaffSolver() override;

  Var new_var(bool no_branch) override;
  void freeze(Var, bool) override {}  // nothing is ever eliminated
  void thaw_extra() override {}
  ClauseGroup new_group() override;
  void delete_group(ClauseGroup group) override;
  void add_clause(std::span<const Lit> lits, ClauseGroup group) override;
  void preprocess(bool) override {}
  void visit_clauses(const ClauseVisitor& visit) const override;
  Lits unit_literals() const override;
  void reset() override;
  SolveStatus solve(bool simplify, bool turn_off_simplification) override;
  SolveStatus solve_assuming(std::span<const Lit> assumptions,
                             std::uint64_t max_conflicts) override;
  const Lits& failed_assumptions() const override { return failed_; }
  ModelValue value(Var variable) const override;
  std::uint32_t num_vars() const override;
  std::uint64_t num_clauses() const override;
  std::uint64_t num_literals() const override;
  std::uint64_t num_conflicts() const override;

  const zchaff::SolverCore& core() const { return *core_; }

 private:
  enum class State : std::uint8_t {
    fresh,    // nothing solved yet
    solved,   // and nothing changed since
    added,    // clauses or variables since the last answer
    deleted,  // clauses deleted since
    failed,   // the core gave no answer: no further solves until a reset
  };

  const zchaff::SolverCoreParams params_;
  std::unique_ptr<zchaff::SolverCore> core_;
  State state_ = State::fresh;
  std::vector<zchaff::Literal> clause_;  // scratch
  Lits failed_;
};

}  // namespace vorel::sat
