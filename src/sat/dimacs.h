// sat/dimacs.h - the instance of a solver as a DIMACS file.
#pragma once

#include <ostream>

#include "sat/sat_solver.h"

namespace vorel::sat {

// Variable v is written as v + 1. The numbers of the header are those of what follows, so strict
// readers take the file too; they count assumptions and fixed variables as clauses. The units are
// added as clauses.
void write_dimacs(std::ostream& stream, const SatSolver& solver, std::span<const Lit> units = {});

}  // namespace vorel::sat
