#include "sat/minisat_solver.h"

#include <minisat/simp/SimpSolver.h>

#include <algorithm>
#include <cassert>
#include <map>
#include <vector>

#include "base/memory_overflow.h"
#include "base/sort_unique.h"

namespace vorel::sat {
namespace {

using Minisat::lbool;
using Minisat::vec;

constexpr double garbage_fraction = 0.5;
constexpr std::uint32_t min_garbage = 150000;                 // words of the clause arena
constexpr std::uint64_t max_budget = std::uint64_t{1} << 62;  // of conflicts; above that: none
constexpr int max_variables = 1 << 30;  // a literal is twice the variable, as an int

Minisat::Lit to_minisat(Lit lit) {
  assert(lit.is_variable());
  return Minisat::toLit(static_cast<int>(lit.code()));
}

Lit from_minisat(Minisat::Lit lit) {
  return Lit::from_code(static_cast<std::uint32_t>(Minisat::toInt(lit)));
}

int to_minisat(Var variable) { return static_cast<int>(variable); }

// MiniSat reports memory exhaustion by an exception of its own, which ends here.
template <class Step>
auto guarded(const Step& step) {
  try {
    return step();
  } catch (const Minisat::OutOfMemoryException&) {
    base::memory_overflow();
  }
}

// Reaches what MiniSat keeps for its subclasses.
class Core : public Minisat::SimpSolver {
 public:
  void collect_garbage() {
    if (okay() && ca.wasted() > min_garbage) checkGarbage();
  }

  bool is_frozen(Minisat::Var variable) const { return frozen[variable] != 0; }

  // The clauses in the database and the literals that are fixed.
  void visit(const SatSolver::ClauseVisitor& visitor) const {
    assert(decisionLevel() == 0);
    for (int i = 0; i < trail.size(); ++i) {
      const Lit fixed = from_minisat(trail[i]);
      visitor({&fixed, 1});
    }
    std::vector<Lit> copy;
    for (int i = 0; i < clauses.size(); ++i) {
      const Minisat::Clause& clause = ca[clauses[i]];
      copy.clear();
      for (int j = 0; j < clause.size(); ++j) copy.push_back(from_minisat(clause[j]));
      visitor(copy);
    }
  }
};

// A living group.
struct GroupRecord {
  Minisat::Var selector = var_Undef;  // none needed so far
  std::vector<Minisat::Lit> units;
  bool poisoned = false;  // holds an empty clause
};

}  // namespace

struct MiniSatSolver::State {
  explicit State(const MiniSatParams& params) {
    core.garbage_frac = garbage_fraction;
    if (!params.simplify) core.eliminate(true);
  }

  // Unsatisfiable without a search.
  bool is_poisoned() const { return contradiction || poisoned_groups > 0; }

  GroupRecord& record(ClauseGroup group) {
    const auto found = groups.find(group);
    assert(found != groups.end() && "a living group");
    return found->second;
  }

  void poison(ClauseGroup group);
  Minisat::Var selector_of(GroupRecord& group);
  void assemble_assumptions();
  void note_failed(std::span<const Lit> assumptions);

  Core core;
  std::map<ClauseGroup, GroupRecord> groups;  // in the order of their numbers
  std::int32_t next_group = 0;
  std::uint32_t poisoned_groups = 0;
  bool contradiction = false;  // an empty permanent clause
  vec<Minisat::Lit> clause;    // scratch
  vec<Minisat::Lit> assumptions;
  Lits failed;  // of the assumptions that came from outside
  std::vector<Minisat::Var> extra_frozen;
};

void MiniSatSolver::State::poison(ClauseGroup group) {
  if (group == PermanentGroup) {
    contradiction = true;
  } else {
    record(group).poisoned = true;
    ++poisoned_groups;
  }
}

Minisat::Var MiniSatSolver::State::selector_of(GroupRecord& group) {
  if (group.selector == var_Undef) {
    // Never decided on: it is assumed while the group lives, and fixed afterwards.
    group.selector = core.newVar(l_Undef, false);
    core.setFrozen(group.selector, true);
  }
  return group.selector;
}

void MiniSatSolver::State::assemble_assumptions() {
  assumptions.clear();
  for (const auto& [id, group] : groups)
    for (const Minisat::Lit unit : group.units) assumptions.push(unit);
  for (const auto& [id, group] : groups)
    if (group.selector != var_Undef) assumptions.push(Minisat::mkLit(group.selector, true));
}

// Those of the groups are in the final conflict as well. It is mostly short, and what was given
// may be long.
void MiniSatSolver::State::note_failed(std::span<const Lit> given) {
  Lits conflict;
  for (int i = 0; i < core.conflict.size(); ++i)
    conflict.push_back(from_minisat(~core.conflict[i]));
  std::ranges::sort(conflict);
  failed.clear();
  for (const Lit lit : given)
    if (std::ranges::binary_search(conflict, lit)) failed.push_back(lit);
  base::sort_unique(failed);
}

MiniSatSolver::MiniSatSolver(const MiniSatParams& params)
    : params_(params), state_(guarded([&] { return std::make_unique<State>(params); })) {}

MiniSatSolver::~MiniSatSolver() = default;

void MiniSatSolver::reset() {
  state_ = guarded([&] { return std::make_unique<State>(params_); });
}

Var MiniSatSolver::new_var(bool no_branch) {
  return guarded([&] {
    const Minisat::Var variable = state_->core.newVar(l_Undef, !no_branch);
    assert(variable < max_variables);
    return Var{static_cast<std::uint32_t>(variable)};
  });
}

void MiniSatSolver::freeze(Var variable, bool value) {
  guarded([&] { state_->core.setFrozen(to_minisat(variable), value); });
}

void MiniSatSolver::thaw_extra() {
  guarded([&] {
    for (const Minisat::Var variable : state_->extra_frozen)
      state_->core.setFrozen(variable, false);
  });
  state_->extra_frozen.clear();
}

ClauseGroup MiniSatSolver::new_group() {
  const ClauseGroup id{state_->next_group++};
  state_->groups.try_emplace(id);
  return id;
}

void MiniSatSolver::delete_group(ClauseGroup group) {
  const GroupRecord& record = state_->record(group);
  if (record.poisoned) --state_->poisoned_groups;
  if (record.selector != var_Undef)
    guarded([&] {
      state_->core.setFrozen(record.selector, false);
      state_->core.addClause(Minisat::mkLit(record.selector));
      state_->core.collect_garbage();
    });
  state_->groups.erase(group);
}

void MiniSatSolver::add_clause(std::span<const Lit> lits, ClauseGroup group) {
  GroupRecord* const record = group == PermanentGroup ? nullptr : &state_->record(group);
  if (state_->contradiction || (record != nullptr && record->poisoned)) return;
  if (lits.empty()) {
    state_->poison(group);
    return;
  }
  if (record != nullptr && lits.size() == 1) {
    record->units.push_back(to_minisat(lits[0]));
    return;
  }
  guarded([&] {
    vec<Minisat::Lit>& clause = state_->clause;
    clause.clear();
    for (const Lit lit : lits) clause.push(to_minisat(lit));
    if (record != nullptr) clause.push(Minisat::mkLit(state_->selector_of(*record)));
    state_->core.addClause_(clause);
  });
}

void MiniSatSolver::preprocess(bool turn_off) {
  if (state_->is_poisoned()) return;
  guarded([&] {
    state_->assemble_assumptions();
    for (int i = 0; i < state_->assumptions.size(); ++i) {
      // Freezing a frozen variable again would thaw it too early.
      const Minisat::Var variable = Minisat::var(state_->assumptions[i]);
      if (state_->core.is_frozen(variable)) continue;
      state_->core.setFrozen(variable, true);
      state_->extra_frozen.push_back(variable);
    }
    state_->core.eliminate(turn_off);
  });
  thaw_extra();
}

SolveStatus MiniSatSolver::solve(bool simplify, bool turn_off_simplification) {
  if (state_->is_poisoned()) return SolveStatus::unsat;
  return guarded([&] {
    state_->assemble_assumptions();
    state_->core.budgetOff();
    const lbool answer =
        state_->core.solveLimited(state_->assumptions, simplify, turn_off_simplification);
    return answer == l_True ? SolveStatus::sat : SolveStatus::unsat;
  });
}

SolveStatus MiniSatSolver::solve_assuming(std::span<const Lit> assumptions,
                                          std::uint64_t max_conflicts) {
  state_->failed.clear();
  if (state_->is_poisoned()) return SolveStatus::unsat;
  return guarded([&] {
    state_->assemble_assumptions();
    for (const Lit lit : assumptions) state_->assumptions.push(to_minisat(lit));
    state_->core.budgetOff();
    if (max_conflicts <= max_budget)
      state_->core.setConfBudget(static_cast<std::int64_t>(max_conflicts));
    const lbool answer = state_->core.solveLimited(state_->assumptions);
    if (answer == l_Undef) return SolveStatus::timeout;
    if (answer == l_True) return SolveStatus::sat;
    state_->note_failed(assumptions);
    return SolveStatus::unsat;
  });
}

const Lits& MiniSatSolver::failed_assumptions() const { return state_->failed; }

ModelValue MiniSatSolver::value(Var variable) const {
  const int index = to_minisat(variable);
  const vec<lbool>& model = state_->core.model;
  if (index >= model.size()) return ModelValue::undefined;  // made after the last solve
  return static_cast<ModelValue>(Minisat::toInt(model[index]));
}

void MiniSatSolver::visit_clauses(const ClauseVisitor& visit) const {
  if (state_->is_poisoned() || !state_->core.okay()) {
    visit({});
    return;
  }
  state_->core.visit(visit);
  guarded([&] { state_->assemble_assumptions(); });
  for (int i = 0; i < state_->assumptions.size(); ++i) {
    const Lit assumed = from_minisat(state_->assumptions[i]);
    visit({&assumed, 1});
  }
}

Lits MiniSatSolver::unit_literals() const { return {}; }

std::uint32_t MiniSatSolver::num_vars() const {
  return static_cast<std::uint32_t>(state_->core.nVars());
}

std::uint64_t MiniSatSolver::num_clauses() const {
  return static_cast<std::uint64_t>(state_->core.nClauses()) + state_->poisoned_groups +
         (state_->contradiction ? 1 : 0);
}

std::uint64_t MiniSatSolver::num_literals() const { return state_->core.clauses_literals; }
std::uint64_t MiniSatSolver::num_conflicts() const { return state_->core.conflicts; }

}  // namespace vorel::sat
