// sat/minisat_solver.h - MiniSat behind the interface of the SAT solvers.
// Here:      clause groups by selector variables and assumptions.
// Not here:  anything of MiniSat's own headers, which stay in the .cpp.
//
// A clause of a group carries the group's selector as one more literal, and every solve assumes
// the selectors of the living groups to be false. A unit clause of a group is an assumption
// itself: it costs no selector and no clause. A group that is deleted has its selector made true.
#pragma once

#include <memory>

#include "sat/sat_solver.h"

namespace vorel::sat {

struct MiniSatParams {
  // Subsumption before the first solve, and elimination of variables that are not frozen. Off:
  // a formula freezes all its variables, so there is nothing to eliminate, and the occurrence lists
  // that are kept for it cost more than adding a million clauses and solving them.
  bool simplify = false;
};

class MiniSatSolver final : public SatSolver {
 public:
  explicit MiniSatSolver(const MiniSatParams& params = {});
  ~MiniSatSolver() override;

  Var new_var(bool no_branch) override;
  void freeze(Var variable, bool value) override;
  void thaw_extra() override;
  ClauseGroup new_group() override;
  void delete_group(ClauseGroup group) override;
  void add_clause(std::span<const Lit> lits, ClauseGroup group) override;
  void preprocess(bool turn_off) override;
  void visit_clauses(const ClauseVisitor& visit) const override;
  Lits unit_literals() const override;
  void reset() override;
  SolveStatus solve(bool simplify, bool turn_off_simplification) override;
  SolveStatus solve_assuming(std::span<const Lit> assumptions,
                             std::uint64_t max_conflicts) override;
  const Lits& failed_assumptions() const override;
  ModelValue value(Var variable) const override;
  std::uint32_t num_vars() const override;
  std::uint64_t num_clauses() const override;
  std::uint64_t num_literals() const override;
  std::uint64_t num_conflicts() const override;

 private:
  struct State;  // all that a reset forgets

  const MiniSatParams params_;
  std::unique_ptr<State> state_;
};

}  // namespace vorel::sat
