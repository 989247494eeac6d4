#include "sat/timed_solve.h"

namespace vorel::sat {
namespace {

constexpr std::uint64_t conflicts_between_looks_at_the_clock = 10'000;

}  // namespace

std::optional<bool> solve_by(CnfFormula& formula, std::span<const Lit> assumptions,
                             const base::Deadline& deadline) {
  if (!deadline.is_set()) return formula.solve_assuming(assumptions);
  while (!deadline.is_over()) {
    const auto answer = formula.solve_assuming(assumptions, conflicts_between_looks_at_the_clock);
    if (answer) return answer;
  }
  return std::nullopt;
}

}  // namespace vorel::sat
