#include "configuration/one_token_parts.h"

#include <algorithm>
#include <functional>

#include "sat/cnf_formula.h"

namespace vorel::configuration {
namespace {

constexpr std::size_t most_parts = 50;
constexpr std::uint64_t most_conflicts = 1000;  // of one solve

// The models are the parts: a literal for each place, true if it belongs to the part.
class PartFormula {
 public:
  explicit PartFormula(const TokenFlow& flow) : formula_{{}}, initial_{} {
    for (const bool is_live : live_places(flow)) {
      // Negated, as solvers try first what makes variables false: large parts are preferred.
      lits_.push_back(is_live ? sat::Lit(formula_.new_var(false), true) : sat::LitFalse);
    }
    for (const TokenFlow::Change& change : flow.changes()) {
      require_move(change.consumed, change.produced);
      require_move(change.produced, change.consumed);
    }
    for (std::uint32_t place = 0; place < lits_.size(); ++place) {
      if (flow.is_initial(place)) initial_.push_back(lits_[place]);
    }
    formula_.add_at_most_one(initial_, sat::PermanentGroup);
    formula_.add_clause(initial_, sat::PermanentGroup);
  }

  // Another one at each call; empty if none is left.
  TokenFlow::Places next() {
    TokenFlow::Places part;
    if (!formula_.solve_assuming({}, most_conflicts).value_or(false)) return part;
    sat::Lits clause;
    for (std::uint32_t place = 0; place < lits_.size(); ++place) {
      if (lits_[place] == sat::LitFalse || !formula_.is_true(lits_[place])) continue;
      part.push_back(place);
      clause.push_back(~lits_[place]);
    }
    formula_.add_clause(clause, sat::PermanentGroup);
    return part;
  }

 private:
  // One token at most on one side, and if there is one, one on the other side.
  void require_move(const TokenFlow::Places& one, const TokenFlow::Places& other) {
    sat::Lits clause;
    for (const std::uint32_t place : one) clause.push_back(lits_[place]);
    formula_.add_at_most_one(clause, sat::PermanentGroup);
    for (const std::uint32_t place : one) {
      clause.assign({~lits_[place]});
      for (const std::uint32_t next : other) clause.push_back(lits_[next]);
      formula_.add_clause(clause, sat::PermanentGroup);
    }
  }

  sat::CnfFormula formula_;
  sat::Lits lits_, initial_;  // by place
};

}  // namespace

std::vector<bool> live_places(const TokenFlow& flow) {
  std::vector<bool> is_live(flow.place_count());
  for (std::uint32_t place = 0; place < flow.place_count(); ++place)
    is_live[place] = flow.is_initial(place);
  for (const TokenFlow::Change& change : flow.changes()) {
    for (const std::uint32_t place : change.produced) is_live[place] = true;
  }
  return is_live;
}

std::vector<TokenFlow::Places> one_token_parts(const TokenFlow& flow) {
  PartFormula formula(flow);
  std::vector<TokenFlow::Places> parts;
  while (parts.size() < most_parts) {
    TokenFlow::Places part = formula.next();
    if (part.empty()) break;
    parts.push_back(std::move(part));
  }
  std::ranges::stable_sort(parts, std::greater(), &TokenFlow::Places::size);
  return parts;
}

}  // namespace vorel::configuration
