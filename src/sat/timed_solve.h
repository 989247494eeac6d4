// sat/timed_solve.h - a solver that is not to run beyond a point of time.
#pragma once

#include <optional>
#include <span>

#include "base/deadline.h"
#include "sat/cnf_formula.h"

namespace vorel::sat {

// CnfFormula::solve_assuming; nothing when that is still open at the deadline, or after so many
// conflicts.
std::optional<bool> solve_by(CnfFormula& formula, std::span<const Lit> assumptions,
                             const base::Deadline& deadline,
                             std::uint64_t max_conflicts = no_conflict_limit);

}  // namespace vorel::sat
