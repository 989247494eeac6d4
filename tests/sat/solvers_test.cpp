// Both solvers side by side, and what each of them is alone in.
#include <gtest/gtest.h>

#include <map>

#include "base/messages.h"
#include "base/run_state.h"
#include "base/sort_unique.h"
#include "sat/minisat_solver.h"
#include "sat/sat_testing.h"
#include "sat/zchaff_solver.h"
#include "support/seeds.h"

namespace vorel::sat {
namespace {

// What makes the literal true.
ModelValue model_value(Lit lit) { return lit.negated() ? ModelValue::no : ModelValue::yes; }

// Gives the same operations to both solvers, keeps the clauses, and compares all answers.
class Pair {
 public:
  Pair(const zchaff::SolverCoreParams& params, bool simplify)
      : solver_(params), other_(MiniSatParams{.simplify = simplify}) {
    reset();
  }

  void reset() {
    solver_.reset();
    other_.reset();
    clauses_.clear();
    others_variable_.clear();
    groups_ = {{PermanentGroup, PermanentGroup}};
  }
  std::uint32_t variables() const { return solver_.num_vars(); }
  std::size_t group_count() const { return groups_.size(); }

  Lit add_variable(bool no_branch) {
    others_variable_.push_back(other_.new_var(no_branch));  // it makes selectors in between
    other_.freeze(others_variable_.back(), true);
    return Lit(solver_.new_var(no_branch), false);
  }
  void add_group() { groups_.emplace_back(solver_.new_group(), other_.new_group()); }
  void add_clause(Lits clause, std::size_t place) {
    solver_.add_clause(clause, groups_[place].first);
    if (!normalise_clause(clause)) return;
    clauses_[groups_[place].first].push_back(clause);
    other_.add_clause(of_other(clause), groups_[place].second);
  }
  void delete_group(std::size_t place) {
    solver_.delete_group(groups_[place].first);
    other_.delete_group(groups_[place].second);
    clauses_.erase(groups_[place].first);
    groups_.erase(groups_.begin() + static_cast<std::ptrdiff_t>(place));
  }

  void preprocess(bool turn_off) { other_.preprocess(turn_off); }

  // True if both say that there is a model, and so does one with the clauses that the other shows.
  bool solve(bool simplify = true) {
    const SolveStatus status = solver_.solve(true, true);
    EXPECT_EQ(status, other_.solve(simplify, simplify));
    MiniSatSolver copy;
    for (std::uint32_t v = 0; v < other_.num_vars(); ++v) copy.new_var(false);
    other_.visit_clauses(
        [&](std::span<const Lit> clause) { copy.add_clause(clause, PermanentGroup); });
    EXPECT_EQ(status, copy.solve(true, true));
    if (status != SolveStatus::sat) return false;
    for (const auto& [group, clauses] : clauses_)
      for (const Lits& clause : clauses) {
        EXPECT_TRUE(std::ranges::any_of(clause, [this](Lit lit) { return is_true(lit); }));
        EXPECT_TRUE(std::ranges::any_of(of_other(clause), [this](Lit lit) {
          return other_.value(lit.variable()) == model_value(lit);
        }));
      }
    return true;
  }
  // Under assumptions; `max_conflicts` is that of our solver.
  void solve_assuming(const Lits& assumptions, std::uint64_t max_conflicts) {
    const SolveStatus status = solver_.solve_assuming(assumptions, max_conflicts);
    if (status == SolveStatus::timeout && max_conflicts < no_conflict_limit) return;
    EXPECT_EQ(status, other_.solve_assuming(of_other(assumptions), no_conflict_limit));
    const auto holds = [this](Lit lit) { return is_true(lit); };
    EXPECT_TRUE(status != SolveStatus::sat || std::ranges::all_of(assumptions, holds));
    if (status != SolveStatus::unsat) return;
    for (const Lits& failed :
         {of_other(solver_.failed_assumptions()), other_.failed_assumptions()}) {
      Lits given = of_other(assumptions), sorted = failed;
      std::ranges::sort(given);
      std::ranges::sort(sorted);
      EXPECT_TRUE(std::ranges::includes(given, sorted));
      EXPECT_EQ(std::ranges::adjacent_find(sorted), sorted.end());
      EXPECT_EQ(other_.solve_assuming(failed, no_conflict_limit), SolveStatus::unsat);
    }
  }
  // Excludes the model on some variables.
  void block(Random& random, std::size_t place) {
    Lits clause;
    for (std::uint32_t v = 0; v < variables(); ++v) {
      if (random.below(2) == 0) continue;
      clause.push_back(lit_of(v) ^ is_true(lit_of(v)));
    }
    add_clause(clause, place);
  }

  // The solver shows what it was given.
  void check_clauses() const {
    std::map<Lits, int> balance;
    std::uint64_t count = 0, literals = 0;
    for (const auto& [group, clauses] : clauses_)
      for (const Lits& clause : clauses) ++balance[clause], ++count, literals += clause.size();
    EXPECT_EQ(solver_.num_clauses(), count);
    EXPECT_EQ(solver_.num_literals(), literals);
    solver_.visit_clauses([&](std::span<const Lit> clause) {
      Lits sorted(clause.begin(), clause.end());
      std::ranges::sort(sorted);
      --balance[sorted];
    });
    EXPECT_TRUE(std::ranges::all_of(balance, [](const auto& entry) { return entry.second == 0; }));
  }
  // Whatever was learnt follows from the clauses that there are now.
  void check_learnt() const {
    MiniSatSolver judge;
    for (std::uint32_t v = 0; v < variables(); ++v) judge.freeze(judge.new_var(false), true);
    for (const auto& [group, clauses] : clauses_)
      for (const Lits& clause : clauses) judge.add_clause(clause, PermanentGroup);
    solver_.core().visit_learnt([&](std::span<const zchaff::Literal> clause) {
      const ClauseGroup opposite = judge.new_group();
      for (const zchaff::Literal literal : clause) {
        const Lit lit = ~Lit::from_code(literal.code());
        judge.add_clause({&lit, 1}, opposite);
      }
      EXPECT_EQ(judge.solve(true, true), SolveStatus::unsat);
      judge.delete_group(opposite);
    });
  }

 private:
  Lits of_other(Lits lits) const {
    for (Lit& lit : lits)
      lit = Lit(others_variable_[static_cast<std::uint32_t>(lit.variable())], lit.negated());
    return lits;
  }
  bool is_true(Lit lit) const { return solver_.value(lit.variable()) == model_value(lit); }

  ZChaffSolver solver_;
  MiniSatSolver other_;
  std::vector<Var> others_variable_;
  std::vector<std::pair<ClauseGroup, ClauseGroup>> groups_;  // of both, in the order of creation
  std::map<ClauseGroup, std::vector<Lits>> clauses_;
};

// A variable that is the parity or the conjunction of two others, and so needs no decision.
void add_gate(Pair& pair, Random& random) {
  const Lits in = random_lits(random, pair.variables(), 2, false);
  const Lit out = pair.add_variable(true);
  if (random.below(2) == 0) {
    pair.add_clause({~out, in[0]}, 0);
    pair.add_clause({~out, in[1]}, 0);
    pair.add_clause({out, ~in[0], ~in[1]}, 0);
  } else {
    pair.add_clause({~out, in[0], in[1]}, 0);
    pair.add_clause({~out, ~in[0], ~in[1]}, 0);
    pair.add_clause({out, ~in[0], in[1]}, 0);
    pair.add_clause({out, in[0], ~in[1]}, 0);
  }
}

// Clauses of three literals, about as many as make a formula hard; in groups short ones too.
void add_clauses(Pair& pair, Random& random) {
  const std::size_t place = random.below(static_cast<std::uint32_t>(pair.group_count()));
  const auto add = [&](std::uint32_t count, std::uint32_t size) {
    for (std::uint32_t i = 0; i < count; ++i)
      pair.add_clause(random_lits(random, pair.variables(), size, false), place);
  };
  const std::uint32_t hundredth = (place == 0 ? 3 : 1) * (50 + random.below(100));
  add(pair.variables() * hundredth / 100, 3);
  if (place == 0) return;
  add(random.below(4), 2);
  add(random.below(1 + pair.variables() / 8), 1);
  if (random.below(20) == 0) add(1, 0);
}

void take_step(Pair& pair, Random& random) {
  switch (random.below(10)) {
    case 0:
      if (pair.group_count() <= 32) pair.add_group();
      break;
    case 1:
      pair.add_variable(false);
      break;
    case 2:
      add_gate(pair, random);
      break;
    case 3:
      add_clauses(pair, random);
      break;
    case 4:
    case 5: {
      const std::size_t place = random.below(static_cast<std::uint32_t>(pair.group_count()));
      if (place > 0) pair.delete_group(place);
      break;
    }
    case 6:
    case 7: {
      Lits assumptions = random_lits(random, pair.variables(), random.below(8), false);
      base::sort_unique(assumptions);
      pair.solve_assuming(assumptions, random.chance(30) ? random.below(5) : no_conflict_limit);
      break;
    }
    case 8:
      pair.preprocess(random.below(2) == 0);
      pair.solve(random.below(2) == 0);
      break;
    default:
      for (std::uint32_t left = random.below(8); pair.solve() && left > 0; --left)
        pair.block(random, random.below(static_cast<std::uint32_t>(pair.group_count())));
  }
}

void start(Pair& pair, Random& random, std::uint32_t variables) {
  pair.reset();
  for (std::uint32_t v = 0; v < variables; ++v) pair.add_variable(false);
  for (int i = 0; i < 3; ++i) pair.add_group();
  for (int i = 0; i < 6; ++i) add_gate(pair, random);
  for (int i = 0; i < 2; ++i) add_clauses(pair, random);
}

TEST(Solvers, AgreeWhileGroupsComeAndGo) {
  support::for_each_seed(2000, [&](std::uint64_t seed) {
    Random random(static_cast<std::uint32_t>(seed));
    Pair pair({.restart_margin_percent = random.below(30),
               .first_restart = random.below(20),
               .reduction_interval = 10},
              /*simplify=*/seed % 2 == 0);
    start(pair, random, 3 + random.below(seed % 10 == 0 ? 80 : 20));
    for (int step = 0; step < 20; ++step) {
      take_step(pair, random);
      if (step == 15 && random.below(10) == 0) start(pair, random, 10);
    }
    pair.check_clauses();
    pair.check_learnt();
  });
}

// One pigeon more than holes; hard for resolution.
void add_pigeons(ZChaffSolver& solver, std::uint32_t holes, ClauseGroup group) {
  const auto in = [&](std::uint32_t p, std::uint32_t h) { return lit_of(p * holes + h); };
  while (solver.num_vars() < (holes + 1) * holes) solver.new_var(false);
  for (std::uint32_t p = 0; p <= holes; ++p) {
    Lits somewhere;
    for (std::uint32_t h = 0; h < holes; ++h) {
      somewhere.push_back(in(p, h));
      for (std::uint32_t q = 0; q < p; ++q) solver.add_clause(Lits{~in(p, h), ~in(q, h)}, group);
    }
    solver.add_clause(somewhere, group);
  }
}

TEST(ZChaffSolver, ReviewsItsClausesAndForgetsWhatAHardGroupTaught) {
  ZChaffSolver solver;
  const ClauseGroup group = solver.new_group();
  add_pigeons(solver, 7, group);
  EXPECT_EQ(solver.solve(true, true), SolveStatus::unsat);
  EXPECT_GT(solver.core().stats().reductions, 0u);
  solver.delete_group(group);
  EXPECT_EQ(solver.core().stats().learnt_clauses, 0u);
  EXPECT_EQ(solver.num_clauses(), 0u);
  EXPECT_EQ(solver.solve(true, true), SolveStatus::sat);
}

TEST(ZChaffSolver, WithoutTimeOrMemoryItFailsUntilItIsReset) {
  const std::pair<zchaff::SolverCoreParams, SolveStatus> cases[] = {
      {{.time_limit = 1e-9}, SolveStatus::timeout},
      {{.memory_limit = 20000}, SolveStatus::memory},  // while learning
      {{.memory_limit = 100}, SolveStatus::memory},    // while the clauses are added
  };
  for (const auto& [params, status] : cases) {
    ZChaffSolver solver(params);
    add_pigeons(solver, 7, PermanentGroup);
    EXPECT_EQ(solver.solve(true, true), status);
    EXPECT_EQ(solver.solve(true, true), SolveStatus::error);
    solver.add_clause(Lits{lit_of(0)}, PermanentGroup);
    EXPECT_EQ(solver.solve(true, true), SolveStatus::error);
    solver.reset();
    EXPECT_EQ(solver.solve(true, true), SolveStatus::sat);
  }
}

// In a process of its own: an error is remembered.
TEST(ZChaffSolver, AtMost32GroupsAreAlive) {
  const auto run = [] {
    ZChaffSolver solver;
    bool good = true;
    for (int number = 1; number <= 32; ++number) good &= solver.new_group() == ClauseGroup{number};
    good &= !base::run_failed() && solver.new_group() == removed_group && base::run_failed();
    solver.delete_group(ClauseGroup{7});
    good &= solver.new_group() == ClauseGroup{7};
    good &= solver.solve(true, true) == SolveStatus::sat;
    solver.add_clause({}, removed_group);  // cannot be kept
    good &= solver.solve(true, true) == SolveStatus::error;
    std::exit(good ? 0 : 1);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "Not enough GID");
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

TEST(ZChaffSolver, UnknownGroupIsNotDeleted) {
  for (const ClauseGroup group : {ClauseGroup{1}, ClauseGroup{33}, removed_group, PermanentGroup}) {
    const auto run = [group] {
      ZChaffSolver().delete_group(group);
      std::exit(base::run_failed() ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "Can't free unallocated GID");
  }
}

TEST(ZChaffSolver, SolvingAgainIsNotedAndGivesTheSameAnswer) {
  ZChaffSolver solver;
  for (int v = 0; v < 2; ++v) solver.new_var(v == 1);
  solver.add_clause(Lits{lit_of(0), lit_of(0)}, PermanentGroup);
  EXPECT_EQ(solver.unit_literals(), Lits{lit_of(0)});
  base::run_state().verbosity = 1;
  testing::internal::CaptureStderr();
  EXPECT_EQ(solver.solve(true, true), SolveStatus::sat);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  testing::internal::CaptureStderr();
  EXPECT_EQ(solver.solve(true, true), SolveStatus::sat);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\nSolving the same SAT instance");
  base::run_state().verbosity = 0;
  EXPECT_EQ(solver.value(Var{0}), ModelValue::yes);
  EXPECT_EQ(solver.value(Var{1}), ModelValue::undefined) << "neither decided on nor implied";
}

}  // namespace
}  // namespace vorel::sat
