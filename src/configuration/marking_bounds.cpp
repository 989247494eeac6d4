#include "configuration/marking_bounds.h"

#include <cassert>

#include "sat/weighted_sum.h"

namespace vorel::configuration {
namespace {

constexpr std::uint64_t most_conflicts = 10'000;  // of one solve
constexpr std::size_t most_traps = 1000;
constexpr std::size_t patience = 10;  // markings that no trap excludes, beyond the number of traps

}  // namespace

void MarkingBounds::assert_invariants(sat::CnfFormula& formula, const sat::Lits& places) const {
  assert(places.size() == flow_.place_count());
  std::vector<sat::SignedTerm> terms;
  for (const PlaceInvariant& invariant : invariants_) {
    terms.clear();
    for (const auto& term : invariant.terms) terms.push_back({places[term.place], term.weight});
    sat::assert_weighted_sum(formula, terms, invariant.total, sat::PermanentGroup);
  }
}

std::vector<TokenFlow::Places> MarkingBounds::traps_against(
    const Encoder& property, const std::vector<bool>& can_be_marked) const {
  sat::CnfFormula formula({});
  sat::Lits places;
  for (const bool can : can_be_marked) {
    places.push_back(can ? sat::Lit(formula.new_var(false), false) : sat::LitFalse);
  }
  property(formula, places);
  assert_invariants(formula, places);

  std::vector<TokenFlow::Places> traps;
  std::vector<bool> marked(places.size());
  sat::Lits clause;
  std::uint64_t steps = effort_;
  std::size_t markings = 0;  // without a trap
  while (markings <= traps.size() + patience && traps.size() < most_traps &&
         formula.solve_assuming({}, most_conflicts).value_or(false)) {
    for (std::size_t i = 0; i < marked.size(); ++i) marked[i] = formula.is_true(places[i]);
    TokenFlow::Places trap = flow_.marked_trap_outside(marked, steps);
    clause.clear();
    if (trap.empty()) {  // what contains it goes, too, but need not be said any more
      ++markings;
      for (std::size_t i = 0; i < marked.size(); ++i) {
        if (marked[i]) clause.push_back(~places[i]);
      }
    } else {
      for (const std::uint32_t place : trap) clause.push_back(places[place]);
      traps.push_back(std::move(trap));
    }
    formula.add_clause(clause, sat::PermanentGroup);
  }
  return traps;
}

}  // namespace vorel::configuration
