// zchaff/solver_core.h - an incremental SAT solver that knows groups of clauses.
// Here:      variables, clauses in groups, retraction of groups, the search, the model.
// Not here:  gates, formulas and the common interface of the solvers, all above this folder.
//
// Conflict-driven clause learning [MS-1999, MMZ-2001, ES-2003]. Each clause, learnt ones included,
// and each fact carries the set of groups that it was derived from; when a group goes, exactly what
// carries it goes too, and all else that was learnt stays. Neither selector variables nor
// assumptions are needed.
//
// After a solve that found a model the search stands still where it is. A clause that is added then
// takes back only the decisions that it needs to: the next model is often near.
#pragma once

#include <optional>
#include <vector>

#include "zchaff/assignment.h"
#include "zchaff/clause_database.h"
#include "zchaff/conflict_analyzer.h"
#include "zchaff/decision_order.h"
#include "zchaff/group_table.h"
#include "zchaff/propagator.h"
#include "zchaff/restart_policy.h"

namespace vorel::zchaff {

struct SolverCoreParams {
  // Recent learnt clauses must be worse than all so far by this much for a restart.
  std::uint32_t restart_margin_percent = 10;
  std::uint32_t first_restart = 100;  // so many conflicts come before it in each solve
  // So many of the learnt clauses without recent use go when the database is reduced.
  std::uint32_t reduction_percent = 75;
  // Conflicts until the first reduction of a large formula; fewer of a small one.
  std::uint32_t reduction_interval = 2000;
  double time_limit = 0;                                // seconds of one solve; 0: none
  std::uint64_t memory_limit = std::uint64_t{1} << 34;  // bytes of clauses
};

struct SolverCoreStats {
  std::uint64_t solves = 0, decisions = 0, conflicts = 0, propagations = 0;
  std::uint64_t restarts = 0, reductions = 0;
  std::uint64_t learnt_clauses = 0;    // alive, units included
  std::uint64_t removed_literals = 0;  // by minimisation
};

// After timeout and memory_out the core is unharmed, but for the clauses that did not fit.
enum class Outcome : std::uint8_t { unsatisfiable, satisfiable, timeout, memory_out };

inline constexpr std::uint64_t no_conflict_limit = ~std::uint64_t{0};

class SolverCore {
 public:
  explicit SolverCore(const SolverCoreParams& params = {});
  SolverCore(const SolverCore&) = delete;
  SolverCore& operator=(const SolverCore&) = delete;

  // `may_branch`: the search may decide on the variable.
  Variable new_variable(bool may_branch);

  // As GroupTable::allocate and release; deletion retracts all that depends on the group.
  std::optional<Group> new_group();
  bool delete_group(Group group);
  bool is_alive(Group group) const { return groups_.is_alive(group); }

  // Any literals of existing variables, in a living group. A clause that is always true is left
  // out. When memory does not suffice, all further solves end with memory_out.
  void add_clause(std::span<const Literal> literals, Group group);

  // Takes back all decisions; what was learnt stays.
  void reset_search();
  Outcome solve() { return solve({}, no_conflict_limit); }
  // A model in which the assumptions are true; timeout after so many conflicts.
  Outcome solve(std::span<const Literal> assumptions, std::uint64_t max_conflicts);
  // When that is unsatisfiable: assumptions that cannot be true together, each once; none if the
  // clauses alone are.
  const std::vector<Literal>& failed_assumptions() const { return failed_; }
  // In the last model; open without one, and where the search had no need of the variable.
  Truth value(Variable variable) const;

  std::uint32_t variable_count() const { return assignment_.variable_count(); }
  // Of the clauses that were given and not retracted, units and empty ones included.
  std::uint64_t clause_count() const;
  std::uint64_t literal_count() const;
  std::uint64_t conflict_count() const { return policy_.conflicts(); }
  SolverCoreStats stats() const;

  // Visits the given clauses, units first, or the learnt ones, facts included: visit(literals).
  template <class Visit>
  void visit_given(const Visit& visit) const {
    for (const Unit& unit : units_)
      if (!unit.learnt) visit(std::span(&unit.literal, 1));
    for (std::size_t i = 0; i < empty_clauses_.size(); ++i)
      for (std::uint64_t n = 0; n < empty_clauses_[i]; ++n) visit(std::span<const Literal>());
    visit_clauses(false, visit);
  }
  template <class Visit>
  void visit_learnt(const Visit& visit) const {
    for (const Literal literal : assignment_.trail())
      if (assignment_.level(literal.variable()) == 0) visit(std::span(&literal, 1));
    for (const Unit& unit : units_)
      if (unit.learnt) visit(std::span(&unit.literal, 1));
    if (refuted_by_) visit(std::span<const Literal>());
    visit_clauses(true, visit);
  }

 private:
  // A clause of one literal. It stays noted though the literal is a fact: that may be retracted.
  struct Unit {
    Literal literal;
    GroupSet groups;
    bool learnt;
  };

  template <class Visit>
  void visit_clauses(bool learnt, const Visit& visit) const {
    database_.visit([&](const Clause& clause) {
      if (clause.is_learnt() == learnt) visit(clause.literals());
    });
  }

  bool normalise(std::span<const Literal> literals);
  void add_unit(Literal literal, GroupSet groups, bool learnt);
  void add_long_clause(GroupSet groups);
  void make_room_for(Literal first, Literal second);
  void assert_fact(Literal literal, GroupSet groups);
  void settle();
  void refute(GroupSet groups);
  void assert_again();

  void backtrack(std::uint32_t level);
  bool learn_from(ClauseRef conflict);
  bool decide();
  bool decide_assumptions();
  void restart();
  std::uint32_t reusable_level();
  void reduce();
  Outcome search(std::uint64_t deadline, std::uint64_t last_conflict);

  const SolverCoreParams params_;
  GroupTable groups_;
  ClauseDatabase database_;
  Assignment assignment_;
  Propagator propagator_;
  ConflictAnalyzer analyzer_;
  DecisionOrder order_;
  RestartPolicy policy_;
  std::vector<Unit> units_;
  std::vector<std::uint64_t> empty_clauses_;  // by group
  std::optional<GroupSet> refuted_by_;        // unsatisfiable while all these groups are alive
  bool out_of_memory_ = false;
  std::vector<Literal> clause_;  // scratch of add_clause
  std::vector<Literal> assumptions_, failed_;
  std::size_t assumed_ = 0;              // so many of the assumptions are true
  std::uint32_t assumption_levels_ = 0;  // those of the assumptions once all are true
  std::vector<Truth> model_;             // by the codes of literals
  SolverCoreStats stats_;                // those not counted elsewhere
};

}  // namespace vorel::zchaff
