#include "zchaff/conflict_analyzer.h"

#include <algorithm>

namespace vorel::zchaff {
namespace {

constexpr std::uint32_t most_credit = 3;

// The reductions that a clause survives after it took part in a conflict. One of many levels has to
// stand comparison each time: on formulas where every clause comes up sooner or later, such as
// those of pigeons in holes, nearly all would stay.
std::uint32_t credit_for(std::uint32_t glue) { return glue <= 2 ? most_credit : glue <= 6 ? 2 : 0; }

}  // namespace

void ConflictAnalyzer::add_variable() {
  marks_.push_back(Mark::none);
  proof_groups_.emplace_back();
  level_stamps_.resize(marks_.size() + 1);
}

std::uint32_t ConflictAnalyzer::count_levels(std::span<const Literal> literals) {
  ++stamp_;
  std::uint32_t count = 0;
  for (const Literal literal : literals) {
    std::uint64_t& stamp = level_stamps_[assignment_.level(literal.variable())];
    if (stamp != stamp_) ++count;
    stamp = stamp_;
  }
  return count;
}

void ConflictAnalyzer::reward(Clause& clause) {
  if (clause.credit() == most_credit) return;
  const std::uint32_t glue = count_levels(clause.literals());
  if (glue < clause.glue()) clause.set_glue(glue);
  clause.set_credit(credit_for(clause.glue()));
}

// Returns the number of new literals at the current level; those below enter the learnt clause.
std::uint32_t ConflictAnalyzer::resolve(Clause& clause, Literal implied) {
  if (clause.is_learnt()) reward(clause);
  learnt_.groups |= clause.groups();
  std::uint32_t open = 0;
  for (const Literal literal : clause.literals()) {
    const Variable v = literal.variable();
    if (literal == implied || mark(v) != Mark::none) continue;
    const std::uint32_t level = assignment_.level(v);
    if (level == 0) {
      learnt_.groups |= assignment_.fact_groups(v);
      continue;
    }
    mark(v) = Mark::in_clause;
    involved_.push_back(v);
    if (level == assignment_.level()) {
      ++open;
    } else {
      learnt_.literals.push_back(literal);
    }
  }
  return open;
}

void ConflictAnalyzer::resolve_to_implication_point(ClauseRef conflict) {
  const std::vector<Literal>& trail = assignment_.trail();
  std::size_t next = trail.size();
  // No literal of the conflict is true, so none is passed over.
  std::uint32_t open = resolve(arena_[conflict], ~arena_[conflict][0]);
  assert(open > 0 && "the conflict comes from the last decision");
  for (;;) {
    while (mark(trail[--next].variable()) != Mark::in_clause) continue;
    const Literal literal = trail[next];
    if (--open == 0) {
      learnt_.literals[0] = ~literal;
      return;
    }
    mark(literal.variable()) = Mark::none;
    open += resolve(arena_[assignment_.reason(literal.variable())], literal);
  }
}

// Looks at the reason's literals until one has to be walked first, which is put on top of the
// stack, or one is needed, which is told by false.
bool ConflictAnalyzer::walk(Step& step) {
  const Clause& reason = arena_[assignment_.reason(step.variable)];
  const std::span<const Literal> literals = reason.literals();
  while (step.next < literals.size()) {
    const Variable v = literals[step.next++].variable();
    if (v == step.variable || mark(v) == Mark::in_clause) continue;
    const std::uint32_t level = assignment_.level(v);
    if (level == 0) {
      step.groups |= assignment_.fact_groups(v);
    } else if (mark(v) == Mark::removable) {
      step.groups |= proof_groups_[index_of(v)];
    } else if (mark(v) == Mark::needed || assignment_.reason(v) == no_clause ||
               level_stamps_[level] != stamp_) {
      return false;
    } else {
      --step.next;  // to be looked at again when its own fate is known
      steps_.push_back({v, 0, {}});
      return true;
    }
  }
  step.groups |= reason.groups();
  return true;
}

void ConflictAnalyzer::give_up() {
  for (std::size_t i = 1; i < steps_.size(); ++i) {
    mark(steps_[i].variable) = Mark::needed;
    walked_.push_back(steps_[i].variable);
  }
  steps_.clear();
}

// Whether the other literals of the clause imply that this one is false, level 0 aside.
bool ConflictAnalyzer::is_redundant(Variable variable) {
  if (assignment_.reason(variable) == no_clause) return false;
  assert(steps_.empty());
  steps_.push_back({variable, 0, {}});
  for (;;) {
    const std::size_t depth = steps_.size();
    if (!walk(steps_.back())) {
      give_up();
      return false;
    }
    if (steps_.size() > depth) continue;
    const Step done = steps_.back();
    steps_.pop_back();
    proof_groups_[index_of(done.variable)] = done.groups;
    if (steps_.empty()) return true;
    mark(done.variable) = Mark::removable;
    walked_.push_back(done.variable);
  }
}

void ConflictAnalyzer::minimise() {
  std::vector<Literal>& literals = learnt_.literals;
  count_levels(literals);  // a literal of another level is never implied by these
  const auto first = literals.begin() + 1;
  const auto end = std::remove_if(first, literals.end(), [&](Literal literal) {
    if (!is_redundant(literal.variable())) return false;
    learnt_.groups |= proof_groups_[index_of(literal.variable())];
    return true;
  });
  removed_literals_ += static_cast<std::uint64_t>(literals.end() - end);
  literals.erase(end, literals.end());
}

void ConflictAnalyzer::order_literals() {
  std::vector<Literal>& literals = learnt_.literals;
  learnt_.glue = count_levels(literals);
  learnt_.back_level = 0;
  if (literals.size() == 1) return;
  const auto highest =
      std::max_element(literals.begin() + 1, literals.end(), [this](Literal a, Literal b) {
        return assignment_.level(a.variable()) < assignment_.level(b.variable());
      });
  std::iter_swap(literals.begin() + 1, highest);
  learnt_.back_level = assignment_.level(literals[1].variable());
}

void ConflictAnalyzer::clear_marks() {
  for (const Variable v : involved_) mark(v) = Mark::none;
  for (const Variable v : walked_) mark(v) = Mark::none;
  walked_.clear();
}

void ConflictAnalyzer::decisions_against(Literal literal, std::vector<Literal>& decisions) {
  decisions.clear();
  if (assignment_.level(literal.variable()) == 0) {
    decisions.push_back(literal);
    return;
  }
  involved_.assign(1, literal.variable());
  mark(literal.variable()) = Mark::in_clause;
  decisions.push_back(literal);
  for (std::size_t next = assignment_.trail().size(); next-- > 0;) {
    const Literal implied = assignment_.trail()[next];
    const Variable v = implied.variable();
    if (assignment_.level(v) == 0) break;
    if (mark(v) == Mark::none) continue;
    if (assignment_.reason(v) == no_clause) {
      decisions.push_back(implied);
      continue;
    }
    for (const Literal other : arena_[assignment_.reason(v)].literals()) {
      const Variable u = other.variable();
      if (mark(u) != Mark::none || assignment_.level(u) == 0) continue;
      mark(u) = Mark::in_clause;
      involved_.push_back(u);
    }
  }
  clear_marks();
}

const LearntClause& ConflictAnalyzer::analyze(ClauseRef conflict) {
  assert(assignment_.level() > 0);
  involved_.clear();
  learnt_.groups = {};
  learnt_.literals.assign(1, Literal{});
  resolve_to_implication_point(conflict);
  minimise();
  order_literals();
  clear_marks();
  return learnt_;
}

}  // namespace vorel::zchaff
