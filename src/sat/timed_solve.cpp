#include "sat/timed_solve.h"

#include <algorithm>

namespace vorel::sat {
namespace {

constexpr std::uint64_t conflicts_between_looks_at_the_clock = 10'000;

}  // namespace

std::optional<bool> solve_by(CnfFormula& formula, std::span<const Lit> assumptions,
                             const base::Deadline& deadline, std::uint64_t max_conflicts) {
  if (!deadline.is_set()) return formula.solve_assuming(assumptions, max_conflicts);
  while (max_conflicts > 0 && !deadline.is_over()) {
    const std::uint64_t conflicts = std::min(max_conflicts, conflicts_between_looks_at_the_clock);
    const auto answer = formula.solve_assuming(assumptions, conflicts);
    if (answer) return answer;
    max_conflicts -= conflicts;
  }
  return std::nullopt;
}

}  // namespace vorel::sat
