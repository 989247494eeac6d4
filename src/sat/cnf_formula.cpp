#include "sat/cnf_formula.h"

#include <algorithm>
#include <cassert>

#include "base/clock.h"
#include "base/messages.h"
#include "base/output_file.h"
#include "base/run_state.h"
#include "sat/dimacs.h"
#include "sat/minisat_solver.h"
#include "sat/zchaff_solver.h"

namespace vorel::sat {
namespace {

constexpr std::uint32_t default_group_count = 3;
constexpr std::size_t first_clause_capacity = 16;
constexpr int zchaff_number = 0, minisat_number = 1;
const char* const formula_file_name = "formula.cnf";

std::unique_ptr<SatSolver> make_solver(int number) {
  if (number == zchaff_number) return std::make_unique<ZChaffSolver>();
  if (number != minisat_number)
    base::print_warning(
        base::format_message("there is no SAT solver %d; the default SAT solver is used", number));
  return std::make_unique<MiniSatSolver>();
}

}  // namespace

CnfParams CnfParams::of(const base::Params& params) {
  return {.solver = params.get("solver"),
          .restrict_branching = params.get("restrict_branching") != 0,
          .store_cnf_formula = params.get("store_cnf_formula") != 0};
}

CnfFormula::CnfFormula(const CnfParams& params)
    : restrict_branching_(params.restrict_branching),
      store_cnf_formula_(params.store_cnf_formula),
      skip_redundant_clauses_(params.solver == zchaff_number),
      solver_(make_solver(params.solver)) {
  clause_.reserve(first_clause_capacity);
  create_default_groups();
}

CnfFormula::~CnfFormula() = default;

void CnfFormula::create_default_groups() {
  assert(groups_.empty());
  for (std::uint32_t i = 0; i < default_group_count; ++i) groups_.push_back(solver_->new_group());
}

void CnfFormula::reset() {
  if (recorder_ != nullptr) recorder_->clear();
  groups_.clear();
  promised_.clear();
  solver_->reset();
  create_default_groups();
}

ClauseGroup CnfFormula::group(std::uint32_t i) const {
  assert(i < groups_.size());
  return groups_[i];
}

ClauseGroup CnfFormula::new_group() { return solver_->new_group(); }

void CnfFormula::remove_group(ClauseGroup id) {
  assert(id != PermanentGroup && id != removed_group);
  solver_->delete_group(id);
  if (recorder_ != nullptr) recorder_->remove_group(id);
  std::ranges::replace(groups_, id, removed_group);
}

ClauseGroup CnfFormula::renew_group(ClauseGroup id) {
  const auto place = std::ranges::find(groups_, id);
  remove_group(id);
  const ClauseGroup fresh = new_group();
  if (place != groups_.end()) *place = fresh;
  return fresh;
}

Var CnfFormula::new_var(bool no_branch) {
  const Var variable = solver_->new_var(no_branch);
  solver_->freeze(variable, true);
  return variable;
}

Lits CnfFormula::new_vars(std::uint32_t count) {
  Lits lits;
  lits.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) lits.push_back(Lit(new_var(true), false));
  return lits;
}

bool normalise_clause(Lits& clause) {
  if (clause.empty()) return true;
  std::ranges::sort(clause);
  assert(!clause.back().is_uninit() && "a literal that was never allocated");
  if (clause.back() == LitTrue) return false;
  clause.erase(std::unique(clause.begin(), clause.end()), clause.end());
  if (clause.back() == LitFalse) clause.pop_back();
  return std::ranges::adjacent_find(clause, [](Lit a, Lit b) { return a == ~b; }) == clause.end();
}

void CnfFormula::emit(std::span<const Lit> clause, ClauseGroup group) {
  assert(std::ranges::all_of(clause, &Lit::is_variable));
  if (recorder_ != nullptr) recorder_->note_clause(clause, group);
  solver_->add_clause(clause, group);
}

void CnfFormula::emit_unit(Lit lit, ClauseGroup group) {
  short_clause_[0] = lit;
  emit(std::span(short_clause_).first(1), group);
}

void CnfFormula::add_clause(std::span<const Lit> lits, ClauseGroup group) {
  clause_.assign(lits.begin(), lits.end());
  if (normalise_clause(clause_)) emit(clause_, group);
}

void CnfFormula::add_unit(Lit lit, ClauseGroup group) {
  assert(!lit.is_uninit());
  if (lit == LitFalse)
    emit({}, group);
  else if (lit != LitTrue)
    emit_unit(lit, group);
}

void CnfFormula::add_units(std::span<const Lit> lits, bool invert, ClauseGroup group) {
  for (const Lit lit : lits) add_unit(lit ^ invert, group);
}

void CnfFormula::add_binary(Lit a, Lit b, ClauseGroup group) {
  if (a == LitFalse || a == b) {
    add_unit(b, group);
  } else if (b == LitFalse) {
    add_unit(a, group);
  } else if (a != LitTrue && b != LitTrue && a != ~b) {
    short_clause_[0] = a;
    short_clause_[1] = b;
    emit(std::span(short_clause_).first(2), group);
  }
}

void CnfFormula::add_at_most_one(std::span<const Lit> lits, ClauseGroup group) {
  at_most_one_.add(*this, lits, group);
}

// Reports what is no answer.
bool CnfFormula::is_model(SolveStatus status) {
  switch (status) {
    case SolveStatus::unsat:
      return false;
    case SolveStatus::sat:
      return true;
    case SolveStatus::timeout:
      base::print_error("SAT solver timeout");
      return false;
    case SolveStatus::memory:
      base::print_error("memory overflow");
      return false;
    case SolveStatus::error:
      break;
  }
  base::print_error("error while solving a SAT instance");
  return false;
}

bool CnfFormula::solve() {
  assert(promised_.empty() && "an output was promised and is not defined");
  if (store_cnf_formula_) store_formula();
  const std::uint64_t start = base::ticks_now();
  const SolveStatus status = solver_->solve(true, true);
  base::run_state().sat_ticks += base::ticks_now() - start;
  return is_model(status);
}

std::optional<bool> CnfFormula::solve_assuming(std::span<const Lit> assumptions,
                                               std::uint64_t max_conflicts) {
  assert(promised_.empty() && "an output was promised and is not defined");
  assert(std::ranges::all_of(assumptions, &Lit::is_variable));
  if (store_cnf_formula_) store_formula(assumptions);
  const std::uint64_t start = base::ticks_now();
  const SolveStatus status = solver_->solve_assuming(assumptions, max_conflicts);
  base::run_state().sat_ticks += base::ticks_now() - start;
  if (status == SolveStatus::timeout && max_conflicts != no_conflict_limit) return std::nullopt;
  return is_model(status);
}

ModelValue CnfFormula::value(Lit lit) const {
  if (lit.is_constant()) return lit == LitTrue ? ModelValue::yes : ModelValue::no;
  assert(lit.is_variable());
  const ModelValue plain = solver_->value(lit.variable());
  if (plain == ModelValue::undefined || !lit.negated()) return plain;
  return plain == ModelValue::yes ? ModelValue::no : ModelValue::yes;
}

void CnfFormula::store_formula(std::span<const Lit> assumptions) const {
  base::OutputFile file(formula_file_name);
  if (!file.is_open()) {
    base::print_warning(base::cannot_open_for_output(formula_file_name));
    return;
  }
  write_dimacs(file.stream(), *solver_, assumptions);
  if (!file.commit())
    base::print_warning(base::format_message("cannot write \"%s\"", formula_file_name));
}

void CnfFormula::print_size(std::ostream& stream) const {
  stream << "Original Num Var/Cl/Lit\t\t\t" << solver_->num_vars() << '/' << solver_->num_clauses()
         << '/' << solver_->num_literals();
}

}  // namespace vorel::sat
