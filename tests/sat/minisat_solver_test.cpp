#include "sat/minisat_solver.h"

#include <gtest/gtest.h>

#include <map>

#include "sat/sat_testing.h"

namespace vorel::sat {
namespace {

// The same operations on lists of clauses, answered by trying all assignments.
class SlowSolver {
 public:
  explicit SlowSolver(std::uint32_t variables) : variables_{variables} {}
  void add_clause(const Lits& clause, ClauseGroup group) { groups_[group].push_back(clause); }
  void delete_group(ClauseGroup group) { groups_.erase(group); }
  bool is_model(Assignment a) const {
    return std::ranges::all_of(groups_, [&](const auto& group) {
      return std::ranges::all_of(group.second, [&](const Lits& c) { return clause_holds(c, a); });
    });
  }
  bool solve() const {
    for (Assignment a = 0; a < 1u << variables_; ++a)
      if (is_model(a)) return true;
    return false;
  }

 private:
  std::uint32_t variables_;
  std::map<ClauseGroup, std::vector<Lits>> groups_;
};

constexpr std::uint32_t variables = 5;

Assignment model_of(const MiniSatSolver& solver) {
  Assignment assignment = 0;
  for (std::uint32_t v = 0; v < variables; ++v)
    if (solver.value(Var{v}) == ModelValue::yes) assignment |= 1u << v;
  return assignment;
}

// Another solver gets the clauses that this one shows.
SolveStatus solve_copy(const MiniSatSolver& solver) {
  MiniSatSolver copy;
  for (std::uint32_t v = 0; v < solver.num_vars(); ++v) copy.new_var(false);
  solver.visit_clauses(
      [&](std::span<const Lit> clause) { copy.add_clause(clause, PermanentGroup); });
  return copy.solve(true, true);
}

void add_frozen_variables(MiniSatSolver& solver) {
  for (std::uint32_t v = 0; v < variables; ++v) solver.freeze(solver.new_var(false), true);
}

void run_random_sequence(Random& random, bool simplify) {
  MiniSatSolver solver(MiniSatParams{.simplify = simplify});
  SlowSolver slow(variables);
  add_frozen_variables(solver);
  std::vector<ClauseGroup> groups = {PermanentGroup, solver.new_group(), solver.new_group()};
  for (int step = 0; step < 60; ++step) {
    const std::size_t place = random.below(static_cast<std::uint32_t>(groups.size()));
    const std::uint32_t action = random.below(16);
    if (action < 9) {
      // Long clauses in the permanent part, so that not all rounds are contradictory at once.
      const std::uint32_t shortest = place == 0 ? 3 : random.below(12) == 0 ? 0 : 1;
      const Lits clause = random_lits(random, variables, shortest + random.below(3), false);
      solver.add_clause(clause, groups[place]);
      slow.add_clause(clause, groups[place]);
    } else if (action < 11 && place > 0) {
      solver.delete_group(groups[place]);
      slow.delete_group(groups[place]);
      groups[place] = solver.new_group();
    } else if (action == 11) {
      solver.preprocess(random.below(2) == 0);
    } else {
      const bool answer =
          solver.solve(random.below(2) == 0, random.below(2) == 0) == SolveStatus::sat;
      ASSERT_EQ(answer, slow.solve()) << "step " << step;
      ASSERT_TRUE(!answer || slow.is_model(model_of(solver))) << "step " << step;
    }
    ASSERT_EQ(solve_copy(solver) == SolveStatus::sat, slow.solve()) << "step " << step;
  }
}

TEST(MiniSatSolver, GroupsComeAndGoAsInASlowSolver) {
  Random random(61);
  for (int round = 0; round < 50; ++round) run_random_sequence(random, round % 2 == 0);
}

TEST(MiniSatSolver, VariablesThatMayBeEliminatedStillGetModelValues) {
  MiniSatSolver solver(MiniSatParams{.simplify = true});
  const Lit a(solver.new_var(false), false), b(solver.new_var(false), false);
  solver.add_clause(std::array{a, b}, PermanentGroup);
  solver.add_clause(std::array{~a, ~b}, PermanentGroup);
  const ClauseGroup group = solver.new_group();
  solver.add_clause(std::array{a}, group);
  solver.preprocess(false);  // must not eliminate the assumed variable
  ASSERT_EQ(solver.solve(true, true), SolveStatus::sat);
  EXPECT_EQ(solver.value(a.variable()), ModelValue::yes);
  EXPECT_EQ(solver.value(b.variable()), ModelValue::no);
}

TEST(MiniSatSolver, DeletingALargeGroupGivesItsClausesBack) {
  MiniSatSolver solver;
  Random random(71);
  constexpr std::uint32_t many = 2000;
  for (std::uint32_t v = 0; v < many; ++v) solver.freeze(solver.new_var(false), true);
  for (int round = 0; round < 3; ++round) {
    const ClauseGroup group = solver.new_group();
    for (int i = 0; i < 40000; ++i) {
      const std::uint32_t v = random.below(many - 2);
      solver.add_clause(std::array{lit_of(v), lit_of(v + 1), ~lit_of(v + 2)}, group);
    }
    EXPECT_EQ(solver.solve(true, true), SolveStatus::sat);
    solver.delete_group(group);
    EXPECT_EQ(solver.solve(true, true), SolveStatus::sat);
    EXPECT_EQ(solver.num_clauses(), 0u);
  }
}

}  // namespace
}  // namespace vorel::sat
