// sat/enumeration.h - loops that list models of a formula by blocking those found.
// Here:      all values of some literals, smallest sets of true or false ones, clauses from cubes.
// Not here:  the search for a model of least cost (sat/least_cost.h).
// Every loop ends when a solve fails; the caller asks run_failed() afterwards.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "sat/cnf_formula.h"
#include "sat/literal_cube.h"

namespace vorel::sat {

using CubeCallback = std::function<void(const LiteralCube&)>;

// Calls back, with the model in place, for each assignment of the literals that some model has, at
// most `limit` times. The blocking clauses stay in the group. `solve` takes the place of
// formula.solve() for those who add constraints until a model is to their liking.
void enumerate(CnfFormula& formula, std::span<const Lit> lits, ClauseGroup group,
               const CubeCallback& callback, std::uint64_t limit, const SolveStep& solve = {});

// Lists sets of false literals: each next model makes a literal true that was false in each model
// before. A cube says false or any.
void enumerate_false(CnfFormula& formula, std::span<const Lit> lits,
                     std::vector<LiteralCube>& cubes, ClauseGroup group);
// The dual. A cube says true or any.
void enumerate_true(CnfFormula& formula, std::span<const Lit> lits, std::vector<LiteralCube>& cubes,
                    ClauseGroup group);

// For each cube, one of the literals that it speaks of has the value that it says.
void require_cubes(CnfFormula& formula, std::span<const LiteralCube> cubes,
                   std::span<const Lit> lits, ClauseGroup group);

}  // namespace vorel::sat
