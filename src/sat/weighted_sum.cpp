#include "sat/weighted_sum.h"

#include <algorithm>
#include <map>
#include <vector>

namespace vorel::sat {
namespace {

constexpr std::size_t most_nodes = 4096;

// The sums that can be reached from both ends, before each literal and after the last.
std::vector<std::map<std::int64_t, Lit>> levels_of(std::span<const SignedTerm> terms,
                                                   std::int64_t total) {
  std::vector<std::int64_t> lowest(terms.size() + 1, 0), highest(terms.size() + 1, 0);
  for (std::size_t i = terms.size(); i-- > 0;) {
    lowest[i] = lowest[i + 1] + std::min<std::int64_t>(terms[i].weight, 0);
    highest[i] = highest[i + 1] + std::max<std::int64_t>(terms[i].weight, 0);
  }
  std::vector<std::map<std::int64_t, Lit>> levels(terms.size() + 1);
  std::size_t nodes = 0;
  const auto enter = [&](std::size_t level, std::int64_t sum) {
    const std::int64_t rest = total - sum;
    if (lowest[level] <= rest && rest <= highest[level])
      nodes += levels[level].try_emplace(sum, LitUninit).second ? 1 : 0;
  };
  enter(0, 0);
  for (std::size_t i = 0; i < terms.size(); ++i) {
    for (const auto& [sum, lit] : levels[i]) {
      enter(i + 1, sum);
      enter(i + 1, sum + terms[i].weight);
    }
    if (nodes > most_nodes) return {};
  }
  return levels;
}

}  // namespace

bool assert_weighted_sum(CnfFormula& formula, std::span<const SignedTerm> terms, std::int64_t total,
                         ClauseGroup group) {
  auto levels = levels_of(terms, total);
  if (levels.empty()) return false;
  // From the last level on, so that a sum knows what it leads to.
  for (auto& [sum, lit] : levels.back()) lit = LitTrue;
  const auto lit_of = [&levels](std::size_t level, std::int64_t sum) {
    const auto found = levels[level].find(sum);
    return found == levels[level].end() ? LitFalse : found->second;
  };
  for (std::size_t i = terms.size(); i-- > 0;) {
    for (auto& [sum, lit] : levels[i]) {
      const Lit with = lit_of(i + 1, sum + terms[i].weight), without = lit_of(i + 1, sum);
      if (with == LitFalse && without == LitFalse) {
        lit = LitFalse;
        continue;
      }
      lit = i == 0 ? LitTrue : Lit(formula.new_var(true), false);
      const Lit in = terms[i].lit;
      formula.add_clause(std::vector<Lit>{~lit, ~in, with}, group);
      formula.add_clause(std::vector<Lit>{~lit, in, without}, group);
      formula.add_clause(std::vector<Lit>{~lit, with, without}, group);
    }
  }
  if (lit_of(0, 0) == LitFalse) formula.add_clause({}, group);
  return true;
}

}  // namespace vorel::sat
