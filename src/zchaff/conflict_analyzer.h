// zchaff/conflict_analyzer.h - from a conflict to the clause that is learnt from it.
// Here:      the first unique implication point [MS-1999, MMZ-2001], minimisation [SB-2009], the
//            groups on which the learnt clause depends.
// Not here:  what is done with the clause (zchaff/solver_core.h).
//
// A learnt clause follows from the clauses that were resolved, so it depends on the groups of all
// of them: of the reasons on the way to the implication point, of the reasons by which a literal is
// left out again, and of the facts that falsify literals at level 0.
#pragma once

#include <vector>

#include "zchaff/assignment.h"

namespace vorel::zchaff {

struct LearntClause {
  // First the literal that becomes true, then, if there is one, a literal of `back_level`.
  std::vector<Literal> literals;
  GroupSet groups;
  std::uint32_t back_level = 0;
  std::uint32_t glue = 0;  // number of levels among the literals [AS-2009]
};

class ConflictAnalyzer {
 public:
  ConflictAnalyzer(ClauseArena& arena, const Assignment& assignment)
      : arena_{arena}, assignment_{assignment} {}

  void add_variable();
  // Above level 0, with a clause of which all literals are false. The result is overwritten by the
  // next call.
  const LearntClause& analyze(ClauseRef conflict);
  // The literal, which is false, and the decisions by which it is.
  void decisions_against(Literal literal, std::vector<Literal>& decisions);
  // The variables that played a part in the last conflict.
  const std::vector<Variable>& involved() const { return involved_; }
  std::uint64_t removed_literals() const { return removed_literals_; }

 private:
  enum class Mark : std::uint8_t { none, in_clause, removable, needed };
  // A step of the walk from a literal to what implies it.
  struct Step {
    Variable variable;
    std::uint32_t next;  // literal of its reason
    GroupSet groups;     // of the reasons and facts so far
  };

  Mark& mark(Variable v) { return marks_[index_of(v)]; }
  void resolve_to_implication_point(ClauseRef conflict);
  std::uint32_t resolve(Clause& clause, Literal implied);
  void reward(Clause& clause);
  void minimise();
  bool is_redundant(Variable variable);
  bool walk(Step& step);
  void give_up();
  void order_literals();
  std::uint32_t count_levels(std::span<const Literal> literals);
  void clear_marks();

  ClauseArena& arena_;
  const Assignment& assignment_;
  LearntClause learnt_;
  std::vector<Mark> marks_;             // by variable
  std::vector<GroupSet> proof_groups_;  // of removable variables: what the removal depends on
  std::vector<Variable> involved_;
  std::vector<Variable> walked_;  // marked in the walks, not in involved_
  std::vector<Step> steps_;
  std::vector<std::uint64_t> level_stamps_;
  std::uint64_t stamp_ = 0;
  std::uint64_t removed_literals_ = 0;
};

}  // namespace vorel::zchaff
