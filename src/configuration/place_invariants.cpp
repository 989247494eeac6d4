#include "configuration/place_invariants.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <numeric>
#include <optional>

namespace vorel::configuration {
namespace {

using Term = PlaceInvariant::Term;
using Row = std::vector<Term>;  // by place; a sum of weights that is 0

constexpr std::int64_t largest_weight = 1 << 20;

// Brings the effects of the transitions into reduced row echelon form.
class Elimination {
 public:
  Elimination(const TokenFlow& flow, std::uint64_t most_steps)
      : row_of_(flow.place_count(), base::no_index), most_steps_{most_steps} {
    for (const TokenFlow::Change& change : flow.changes()) {
      if (failed_) return;
      add(effect_of(change));
    }
    // From the last pivot on, what is subtracted has no pivots any more but its own.
    for (auto place = static_cast<std::uint32_t>(row_of_.size()); place-- > 0 && !failed_;) {
      if (row_of_[place] != base::no_index) clear_other_pivots(rows_[row_of_[place]]);
    }
  }

  // The solutions of the rows: one for each place without a row of its own.
  std::vector<PlaceInvariant> solutions() const {
    if (failed_) return {};
    std::vector<PlaceInvariant> result;
    for (std::uint32_t place = 0; place < row_of_.size(); ++place) {
      if (row_of_[place] != base::no_index) continue;
      if (auto solution = solution_with(place)) result.push_back(std::move(*solution));
    }
    return result;
  }

 private:
  static Row effect_of(const TokenFlow::Change& change) {
    Row row;
    const auto has = [](const TokenFlow::Places& places, std::uint32_t place) {
      return std::ranges::binary_search(places, place);
    };
    for (const std::uint32_t place : change.consumed) {
      if (!has(change.produced, place)) row.push_back({place, -1});
    }
    for (const std::uint32_t place : change.produced) {
      if (!has(change.consumed, place)) row.push_back({place, 1});
    }
    std::ranges::sort(row, {}, &Term::place);
    return row;
  }

  void add(Row row) {
    while (!row.empty() && row_of_[row.front().place] != base::no_index) {
      row = without(row, row.front(), rows_[row_of_[row.front().place]]);
      if (failed_) return;
    }
    if (row.empty()) return;
    row_of_[row.front().place] = static_cast<std::uint32_t>(rows_.size());
    rows_.push_back(std::move(row));
  }

  void clear_other_pivots(Row& row) {
    for (std::size_t i = 1; i < row.size();) {
      const std::uint32_t other = row_of_[row[i].place];
      if (other == base::no_index) {
        ++i;
        continue;
      }
      row = without(row, row[i], rows_[other]);
      if (failed_) return;
    }
  }

  // A multiple of the row without the term, which is the other row's pivot.
  Row without(const Row& row, Term term, const Row& other) {
    assert(other.front().place == term.place);
    const std::int64_t divisor = std::gcd(term.weight, other.front().weight);
    const std::int64_t factor = other.front().weight / divisor;
    const std::int64_t subtracted = term.weight / divisor;
    Row result;
    auto a = row.begin();
    auto b = other.begin();
    while (a != row.end() || b != other.end()) {
      const bool from_row = b == other.end() || (a != row.end() && a->place <= b->place);
      const bool from_other = a == row.end() || (b != other.end() && b->place <= a->place);
      const std::uint32_t place = from_row ? a->place : b->place;
      const std::int64_t weight =
          (from_row ? factor * a->weight : 0) - (from_other ? subtracted * b->weight : 0);
      if (weight != 0) result.push_back({place, weight});
      if (from_row) ++a;
      if (from_other) ++b;
    }
    steps_ += row.size() + other.size();
    shorten(result);
    return result;
  }

  void shorten(Row& row) {
    std::int64_t divisor = 0;
    for (const Term& term : row) divisor = std::gcd(divisor, term.weight);
    for (Term& term : row) {
      term.weight /= divisor;
      if (std::abs(term.weight) > largest_weight) failed_ = true;
    }
    if (steps_ > most_steps_) failed_ = true;
  }

  // The weights of the places with rows that make the row of each add up, given the weight of one
  // place without. Nothing if the numbers become large.
  std::optional<PlaceInvariant> solution_with(std::uint32_t free) const {
    std::int64_t weight = 1;
    std::vector<std::pair<std::uint32_t, std::pair<std::int64_t, std::int64_t>>> parts;
    for (const Row& row : rows_) {
      const auto term = std::ranges::lower_bound(row, free, {}, &Term::place);
      if (term == row.end() || term->place != free) continue;
      parts.push_back({row.front().place, {-term->weight, row.front().weight}});
      weight = std::lcm(weight, row.front().weight / std::gcd(row.front().weight, term->weight));
      if (weight > largest_weight) return std::nullopt;
    }
    PlaceInvariant solution;
    solution.terms.push_back({free, weight});
    for (const auto& [place, ratio] : parts) {
      solution.terms.push_back({place, weight * ratio.first / ratio.second});
    }
    std::ranges::sort(solution.terms, {}, &Term::place);
    return solution;
  }

  std::vector<Row> rows_;
  std::vector<std::uint32_t> row_of_;  // by place: the row that begins with it
  const std::uint64_t most_steps_;
  std::uint64_t steps_ = 0;
  bool failed_ = false;
};

}  // namespace

std::vector<PlaceInvariant> place_invariants(const TokenFlow& flow, std::uint64_t most_steps) {
  auto invariants = Elimination(flow, most_steps).solutions();
  for (PlaceInvariant& invariant : invariants) {
    for (const Term& term : invariant.terms) {
      if (flow.is_initial(term.place)) invariant.total += term.weight;
    }
  }
  return invariants;
}

}  // namespace vorel::configuration
