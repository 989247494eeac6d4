#include "sat/enumeration.h"

#include <cassert>

#include "base/messages.h"

namespace vorel::sat {
namespace {

CubeValue cube_value(const CnfFormula& formula, Lit lit) {
  if (lit.is_uninit()) return CubeValue::any;
  switch (formula.value(lit)) {
    case ModelValue::yes:
      return CubeValue::yes;
    case ModelValue::no:
      return CubeValue::no;
    default:
      return CubeValue::any;
  }
}

// The literal that is true when `lit` has the value.
Lit literal_for(Lit lit, CubeValue value) { return lit ^ (value == CubeValue::no); }

void enumerate_sets(CnfFormula& formula, std::span<const Lit> lits, std::vector<LiteralCube>& cubes,
                    ClauseGroup group, CubeValue listed) {
  Lits clause;
  while (!base::run_failed() && formula.solve()) {
    LiteralCube cube(lits.size(), listed);
    clause.clear();
    for (std::size_t i = 0; i < lits.size(); ++i) {
      if (cube_value(formula, lits[i]) == listed)
        clause.push_back(~literal_for(lits[i], listed));
      else
        cube.set(i, CubeValue::any);
    }
    cubes.push_back(cube);
    if (clause.empty()) return;
    formula.add_clause(clause, group);
  }
}

}  // namespace

void enumerate(CnfFormula& formula, std::span<const Lit> lits, ClauseGroup group,
               const CubeCallback& callback, std::uint64_t limit, const SolveStep& solve) {
  const auto has_model = [&] { return solve ? solve() : formula.solve(); };
  Lits clause;
  for (; limit > 0 && !base::run_failed() && has_model(); --limit) {
    LiteralCube cube(lits.size(), CubeValue::any);
    clause.clear();
    for (std::size_t i = 0; i < lits.size(); ++i) {
      const CubeValue value = cube_value(formula, lits[i]);
      cube.set(i, value);
      if (value != CubeValue::any) clause.push_back(~literal_for(lits[i], value));
    }
    callback(cube);
    formula.add_clause(clause, group);
  }
}

void enumerate_false(CnfFormula& formula, std::span<const Lit> lits,
                     std::vector<LiteralCube>& cubes, ClauseGroup group) {
  enumerate_sets(formula, lits, cubes, group, CubeValue::no);
}

void enumerate_true(CnfFormula& formula, std::span<const Lit> lits, std::vector<LiteralCube>& cubes,
                    ClauseGroup group) {
  enumerate_sets(formula, lits, cubes, group, CubeValue::yes);
}

void require_cubes(CnfFormula& formula, std::span<const LiteralCube> cubes,
                   std::span<const Lit> lits, ClauseGroup group) {
  Lits clause;
  for (const LiteralCube& cube : cubes) {
    assert(cube.size() == lits.size());
    clause.clear();
    for (std::size_t i = 0; i < lits.size(); ++i)
      if (cube[i] != CubeValue::any) clause.push_back(literal_for(lits[i], cube[i]));
    formula.add_clause(clause, group);
  }
}

}  // namespace vorel::sat
