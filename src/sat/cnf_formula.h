// sat/cnf_formula.h - the object through which every encoder talks to a SAT solver.
// Here:      variables, normalised clauses in groups, gates, at-most-one constraints, solving.
// Not here:  integer arithmetic over literals (sat/integer_circuit.h), searches over many models
//            (sat/enumeration.h).
// A clause goes to the solver the moment it is added. All variables are frozen: nothing here is
// ever eliminated by preprocessing. One formula per search; used from one thread.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <unordered_set>
#include <vector>

#include "base/params.h"
#include "sat/at_most_one.h"
#include "sat/definition_recorder.h"
#include "sat/gate.h"
#include "sat/literal.h"
#include "sat/sat_solver.h"

namespace vorel::sat {

struct CnfParams {
  // Number of the back end: 0 the core with native groups, 1 MiniSat; others get a warning and 1.
  int solver = 1;
  bool restrict_branching = false;  // no decisions on the outputs of small gates either
  bool store_cnf_formula = false;   // write formula.cnf before every solve

  static CnfParams of(const base::Params& params);
};

inline constexpr std::uint64_t no_conflict_limit = ~std::uint64_t{0};

class CnfFormula {
 public:
  explicit CnfFormula(const CnfParams& params);
  ~CnfFormula();
  CnfFormula(const CnfFormula&) = delete;
  CnfFormula& operator=(const CnfFormula&) = delete;

  // Back to an empty formula with three new default groups.
  void reset();

  // Groups. By convention the default groups are: 0 the fixed part of an instance, 1 the property
  // under test, 2 the clauses that an optimisation step replaces.
  ClauseGroup group(std::uint32_t i) const;
  ClauseGroup new_group();
  void remove_group(ClauseGroup id);
  // Removes the group and puts a fresh one in its place in the list.
  ClauseGroup renew_group(ClauseGroup id);

  // Variables, frozen.
  Var new_var(bool no_branch);
  Lits new_vars(std::uint32_t count);  // never branched on, as positive literals

  // Clauses. Constants fold; a clause that is always true adds nothing.
  void add_clause(std::span<const Lit> lits, ClauseGroup group);
  void add_units(std::span<const Lit> lits, bool invert, ClauseGroup group);
  void add_unit(Lit lit, ClauseGroup group);
  void add_binary(Lit a, Lit b, ClauseGroup group);
  void add_at_most_one(std::span<const Lit> lits, ClauseGroup group);

  // Gates: the literal of a function of other literals, with the wanted half of its definition.
  Lit make_gate(Gate gate, ClauseGroup group, Polarity polarity = default_polarity);
  // The same through a cell, for caches: a second request with the other polarity adds only the
  // missing half. Callers test cell.serves(polarity) first.
  Lit define_gate(LitCell& cell, GateType type, std::span<const Lit> lits, ClauseGroup group,
                  Polarity polarity = default_polarity);
  // An output that can be used in clauses at once and whose gate is told later, by one call of
  // define_output. It may be branched on as the output of a gate of this code may.
  Lit promise_output(std::uint32_t gate_code);
  // Both halves of the gate's definition for an output that was promised. The normal form of the
  // gate must not be the complement of a gate with two or more inputs.
  void define_output(Lit output, Gate gate, ClauseGroup group);

  // Solves; false when there is no model, and after a reported failure (see run_failed()).
  // No promised output may be left without its definition.
  bool solve();
  // The same with literals that are true besides. Nothing when that is still open after so many
  // conflicts. After false, failed_assumptions() has some of them that exclude each other.
  std::optional<bool> solve_assuming(std::span<const Lit> assumptions,
                                     std::uint64_t max_conflicts = no_conflict_limit);
  const Lits& failed_assumptions() const { return solver_->failed_assumptions(); }
  // After a solve that gave true. A constant has its own value.
  ModelValue value(Lit lit) const;
  bool is_true(Lit lit) const { return value(lit) == ModelValue::yes; }

  // Writes the instance in DIMACS form to formula.cnf in the current directory.
  void store_formula(std::span<const Lit> assumptions = {}) const;
  // "Original Num Var/Cl/Lit\t\t\tV/C/L".
  void print_size(std::ostream& stream) const;

  SatSolver& solver() { return *solver_; }
  const SatSolver& solver() const { return *solver_; }
  void set_recorder(DefinitionRecorder* recorder) { recorder_ = recorder; }  // null: none

 private:
  void create_default_groups();
  static bool is_model(SolveStatus status);
  // Passes a clause on as it stands.
  void emit(std::span<const Lit> clause, ClauseGroup group);
  void emit_unit(Lit lit, ClauseGroup group);
  Lit new_output(std::uint32_t gate_code);
  // The output of a gate that is normalised already.
  Lit output_of(const Gate& gate, ClauseGroup group, Polarity polarity);
  // The clauses of the wanted half of `output` being a normalised gate.
  void emit_definition(const Gate& gate, Lit output, ClauseGroup group, Polarity polarity);
  void emit_patterns(const Gate& gate, Lit output, ClauseGroup group, Polarity polarity);
  void emit_junction(const Gate& gate, Lit output, ClauseGroup group, Polarity polarity);
  void emit_wide_parity(const Gate& gate, Lit output, ClauseGroup group, Polarity polarity);
  void emit_equality(const Gate& gate, Lit output, ClauseGroup group, Polarity polarity);
  Lit fresh_output_of(const Gate& gate, ClauseGroup group);

  std::vector<ClauseGroup> groups_;   // the default groups; removed_group where one was removed
  std::array<Lit, 8> short_clause_;   // scratch
  Lits clause_;                       // scratch of add_clause
  AtMostOneEncoder at_most_one_;      // scratch
  std::unordered_set<Var> promised_;  // outputs whose gates are still to be told
  const bool restrict_branching_;
  const bool store_cnf_formula_;
  const bool skip_redundant_clauses_;  // those of gates that only help propagation
  const std::unique_ptr<SatSolver> solver_;
  DefinitionRecorder* recorder_ = nullptr;  // not owned
};

// Solves some formula; false when there is no model, and after a reported failure.
using SolveStep = std::function<bool()>;

// Sorts a clause, removes duplicates and false constants. False if the clause is always true.
bool normalise_clause(Lits& clause);

}  // namespace vorel::sat
