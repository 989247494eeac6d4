// sat/definition_recorder.h - a log of what a formula was built from.
// Here:      which gate defines a variable, and in which groups a variable occurs.
// Not here:  the formula itself (sat/cnf_formula.h), which fills the log while one is attached.
#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <unordered_map>
#include <utility>

#include "sat/gate.h"
#include "sat/literal.h"

namespace vorel::sat {

class DefinitionRecorder {
 public:
  struct Definition {
    Gate gate;  // normalised
    ClauseGroup group;
  };

  // The first definition of a variable stays.
  void record_gate(Var output, const Gate& gate, ClauseGroup group);
  // The variables of a clause that was added.
  void note_clause(std::span<const Lit> clause, ClauseGroup group);
  void remove_group(ClauseGroup group);
  void clear();

  // Null if no recorded gate defines the variable.
  const Definition* definition(Var variable) const;
  bool occurs(Var variable, ClauseGroup group) const;
  std::size_t definition_count() const { return definitions_.size(); }

 private:
  std::unordered_map<Var, Definition> definitions_;
  std::set<std::pair<ClauseGroup, Var>> occurrences_;  // by group: a group is one range
};

}  // namespace vorel::sat
