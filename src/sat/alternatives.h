// sat/alternatives.h - a search that begins with what may make a long disjunction true.
// Here:      trying its parts one by one, with few conflicts for each.
// Not here:  which disjunctions a question has (reachlang/predicate_encoding.h).
#pragma once

#include <optional>
#include <vector>

#include "sat/cnf_formula.h"

namespace vorel::sat {

// Where `lit` is true, so is the literal of one of those below, if there are any.
struct Alternative {
  Lit lit;
  std::vector<Alternative> below;
};

// A solver decides for the last literal of a long clause after it has decided against all others.
// If each is refuted by itself, this is work in the square of their number; assumed one after the
// other it is a conflict for each.
class AlternativeSearch {
 public:
  // In each model of the formula one of them is true. None: nothing is tried.
  explicit AlternativeSearch(std::vector<Alternative> alternatives = {})
      : alternatives_{std::move(alternatives)} {}

  // Looks for a model until as many alternatives are left open as show that it does not pay. False
  // when there is no model, and after a reported failure. Nothing when the question is open: then
  // the formula's solve() has the answer, and finds what has been learnt. After clauses have been
  // added, goes on with the alternative that gave the last model.
  std::optional<bool> solve(CnfFormula& formula);

 private:
  enum class Outcome : std::uint8_t { refuted, open, model, stop };

  Outcome probe(CnfFormula& formula);
  Outcome examine(const Alternative& alternative, CnfFormula& formula);

  std::vector<Alternative> alternatives_;
  std::size_t next_ = 0;
  std::uint32_t open_ = 0;
  Lits assumed_;  // from the top to where the search is
};

}  // namespace vorel::sat
