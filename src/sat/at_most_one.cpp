#include "sat/at_most_one.h"

#include <algorithm>
#include <cassert>

#include "sat/cnf_formula.h"

namespace vorel::sat {
namespace {

// Up to here the pairs are fewer clauses than the chain, or not many more, and need no variables.
constexpr std::size_t max_pairwise = 6;

void add_pairs(CnfFormula& formula, std::span<const Lit> lits, ClauseGroup group) {
  for (std::size_t i = 0; i < lits.size(); ++i)
    for (std::size_t j = i + 1; j < lits.size(); ++j) formula.add_binary(~lits[i], ~lits[j], group);
}

// The sequential counter [Sinz-2005]: seen[i] is true as soon as one of the first i + 1 literals
// is.
void add_chain(CnfFormula& formula, std::span<const Lit> lits, ClauseGroup group) {
  const std::size_t last = lits.size() - 1;
  const Lits seen = formula.new_vars(static_cast<std::uint32_t>(last));
  formula.add_binary(~lits[0], seen[0], group);
  for (std::size_t i = 1; i < last; ++i) {
    formula.add_binary(~lits[i], seen[i], group);
    formula.add_binary(~seen[i - 1], seen[i], group);
    formula.add_binary(~seen[i - 1], ~lits[i], group);
  }
  formula.add_binary(~seen[last - 1], ~lits[last], group);
}

}  // namespace

void AtMostOneEncoder::strip_constants() {
  while (!sorted_.empty() && sorted_.back() == LitTrue) {
    ++truths_;
    sorted_.pop_back();
  }
  while (!sorted_.empty() && sorted_.back() == LitFalse) sorted_.pop_back();
}

// Sorts out literals that stand in the list more than once, or with their complement. False if
// both a literal and its complement stand there twice.
bool AtMostOneEncoder::split_variables() {
  for (auto first = sorted_.begin(); first != sorted_.end();) {
    const Lit lit = *first;
    const auto complements = std::find_if(first, sorted_.end(), [&](Lit x) { return x != lit; });
    const auto next = std::find_if(complements, sorted_.end(), [&](Lit x) { return x != ~lit; });
    const auto copies = complements - first;
    const auto complement_copies = next - complements;
    first = next;
    if (copies > 1 && complement_copies > 1) return false;
    if (copies == 1 && complement_copies == 0) {
      singles_.push_back(lit);
      continue;
    }
    if (complement_copies > 0) ++truths_;  // one of the two is true
    if (copies > 1) must_be_false_.push_back(lit);
    if (complement_copies > 1) must_be_false_.push_back(~lit);
  }
  return true;
}

void AtMostOneEncoder::add(CnfFormula& formula, std::span<const Lit> lits, ClauseGroup group) {
  sorted_.assign(lits.begin(), lits.end());
  singles_.clear();
  must_be_false_.clear();
  truths_ = 0;
  std::ranges::sort(sorted_);
  assert((sorted_.empty() || !sorted_.back().is_uninit()) && "a literal that was never allocated");
  strip_constants();
  if (!split_variables() || truths_ > 1) {
    formula.add_clause({}, group);
    return;
  }
  formula.add_units(must_be_false_, true, group);
  if (truths_ == 1)
    formula.add_units(singles_, true, group);
  else if (singles_.size() <= max_pairwise)
    add_pairs(formula, singles_, group);
  else
    add_chain(formula, singles_, group);
}

}  // namespace vorel::sat
