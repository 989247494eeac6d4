#include "sat/alternatives.h"

#include <algorithm>

#include "base/messages.h"

namespace vorel::sat {
namespace {

constexpr std::uint64_t most_conflicts = 4;  // for one alternative
constexpr std::uint32_t most_open = 8;

}  // namespace

AlternativeSearch::Outcome AlternativeSearch::probe(CnfFormula& formula) {
  const std::optional<bool> answer = formula.solve_assuming(assumed_, most_conflicts);
  if (!answer) return Outcome::open;
  if (*answer) return Outcome::model;
  return base::run_failed() || formula.failed_assumptions().empty() ? Outcome::stop
                                                                    : Outcome::refuted;
}

// What is left open is split up; it is refuted if all that is below it is.
AlternativeSearch::Outcome AlternativeSearch::examine(const Alternative& alternative,
                                                      CnfFormula& formula) {
  if (alternative.lit == LitFalse) return Outcome::refuted;
  const std::size_t above = assumed_.size();
  if (alternative.lit != LitTrue) assumed_.push_back(alternative.lit);
  Outcome outcome = probe(formula);
  if (outcome == Outcome::open && !alternative.below.empty()) {
    outcome = Outcome::refuted;
    for (const Alternative& part : alternative.below) {
      const Outcome of_part = examine(part, formula);
      if (of_part != Outcome::refuted) outcome = of_part;
      if (of_part >= Outcome::model || open_ > most_open) break;
    }
  } else if (outcome == Outcome::open) {
    ++open_;
  }
  assumed_.resize(above);
  return outcome;
}

std::optional<bool> AlternativeSearch::solve(CnfFormula& formula) {
  for (; next_ < alternatives_.size() && open_ <= most_open; ++next_) {
    const Outcome outcome = examine(alternatives_[next_], formula);
    if (outcome >= Outcome::model) return outcome == Outcome::model;
  }
  return std::nullopt;
}

}  // namespace vorel::sat
