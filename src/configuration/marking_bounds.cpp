#include "configuration/marking_bounds.h"

#include <cassert>

#include "configuration/one_token_parts.h"
#include "sat/weighted_sum.h"

namespace vorel::configuration {
namespace {

constexpr std::uint64_t most_conflicts = 10'000;  // of one solve
constexpr std::size_t most_clauses = 1000;
constexpr std::size_t patience =
    10;  // markings that nothing excludes, beyond the number of clauses
constexpr std::uint64_t local_effort = 100;  // times that of traps

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

MarkingFilter::MarkingFilter(const MarkingBounds& bounds, const Encoder& property,
                             const std::vector<bool>& can_be_marked)
    : bounds_{bounds},
      formula_{{}},
      trap_steps_{bounds.effort()},
      local_steps_{local_effort * bounds.effort()} {
  for (const bool can : can_be_marked) {
    places_.push_back(can ? sat::Lit(formula_.new_var(false), false) : sat::LitFalse);
  }
  property(formula_, places_);
  bounds.assert_invariants(formula_, places_);
}

// A marking for which nothing is found is excluded by itself, but only as long as this goes on.
std::vector<MarkingFilter::Clause> MarkingFilter::exclude_markings(
    const std::function<Clause(const Marking&)>& find) {
  std::vector<Clause> clauses;
  Marking marked(places_.size());
  sat::Lits lits;
  std::size_t left = 0;  // markings
  const sat::ClauseGroup group = formula_.new_group();
  while (left <= clauses.size() + patience && clauses.size() < most_clauses &&
         formula_.solve_assuming({}, most_conflicts).value_or(false)) {
    for (std::size_t i = 0; i < marked.size(); ++i) marked[i] = formula_.is_true(places_[i]);
    Clause clause = find(marked);
    lits.clear();
    for (const auto [place, is_marked] : clause) lits.push_back(places_[place] ^ !is_marked);
    if (!clause.empty()) {
      formula_.add_clause(lits, sat::PermanentGroup);
      clauses.push_back(std::move(clause));
      continue;
    }
    ++left;  // what contains it goes, too, but need not be said any more
    for (std::size_t i = 0; i < marked.size(); ++i) {
      if (marked[i]) lits.push_back(~places_[i]);
    }
    formula_.add_clause(lits, group);
  }
  formula_.remove_group(group);
  return clauses;
}

MarkingFilter::Clause MarkingFilter::trap_against(const Marking& marked) {
  Clause clause;
  for (const std::uint32_t place : bounds_.flow().marked_trap_outside(marked, trap_steps_))
    clause.push_back({place, true});
  return clause;
}

MarkingFilter::Clause MarkingFilter::local_clause_against(const Marking& marked) {
  if (!parts_) parts_ = one_token_parts(bounds_.flow());
  for (std::size_t i = 0; i < parts_->size(); ++i) {
    if (i == local_.size())
      local_.emplace_back(bounds_.flow(), bounds_.invariants(), (*parts_)[i], local_steps_);
    Clause clause = local_[i].clause_against(marked);
    if (!clause.empty()) return clause;
  }
  return {};
}

std::vector<MarkingFilter::Clause> MarkingFilter::traps() {
  return exclude_markings([this](const Marking& marked) { return trap_against(marked); });
}

std::vector<MarkingFilter::Clause> MarkingFilter::local_clauses() {
  return exclude_markings([this](const Marking& marked) {
    Clause clause = trap_against(marked);
    return clause.empty() ? local_clause_against(marked) : clause;
  });
}

}  // namespace vorel::configuration
