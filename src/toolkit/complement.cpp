#include "toolkit/complement.h"

#include <algorithm>
#include <iostream>
#include <numeric>

#include "base/run_state.h"
#include "toolkit/tautology.h"
#include "toolkit/transversals.h"

namespace vorel::toolkit {
namespace {

// Splits until the rows are unate, where the complement or a simpler cover of the same points is
// at hand, and merges the halves.
class UnateRecursion {
 public:
  enum class Goal { complement, simplify };

  UnateRecursion(const PackedCover& cover, Goal goal, const ProductBounds& bounds = {})
      : goal_{goal},
        bounds_{bounds},
        rows_{cover},
        result_{cover.width()},
        summary_{cover.width()},
        transversals_{cover.width()} {}

  PackedCover run() {
    solve(0);
    return std::move(result_);
  }

 private:
  void solve(std::size_t first);
  void complement_unate(std::size_t first);
  void simplify_unate(std::size_t first);
  void merge(std::size_t first, std::size_t middle, std::size_t position);
  void raise_common(std::size_t first, std::size_t middle, std::vector<bool>& raised,
                    std::vector<bool>& dropped) const;
  void raise_contained(std::size_t first, std::size_t middle, std::vector<bool>& raised) const;

  Goal goal_;
  ProductBounds bounds_;  // of the complement of a cover that is unate as a whole
  PackedCover rows_;      // a stack: each level of the recursion appends its cofactors
  PackedCover result_;    // each level appends its own
  ColumnSummary summary_;
  SplitChooser chooser_;
  TransversalSearch transversals_;
};

// A product of the complement negates one literal of each row: they form a transversal. What the
// rows leave out in a column is what the negated literal admits.
void UnateRecursion::complement_unate(std::size_t first) {
  if (summary_.has_full_row()) return;
  transversals_.clear();
  std::vector<Word> positions(rows_.stride()), meet(summary_.meet().begin(), summary_.meet().end());
  for (std::size_t i = first; i < rows_.size(); ++i) {
    for (std::size_t k = 0; k < rows_.stride(); ++k) positions[k] = literal_positions(rows_[i][k]);
    transversals_.add_set(positions);
  }
  const auto add_product = [&](ConstRow negated) {
    const Row row = result_.add_full();
    for (std::size_t k = 0; k < row.size(); ++k) row[k] = ~(meet[k] & both_bits(negated[k]));
    return result_.size() < bounds_.max_products;
  };
  transversals_.for_each(add_product, bounds_.max_literals);
}

void UnateRecursion::simplify_unate(std::size_t first) {
  PackedCover unate(rows_.width());
  for (std::size_t i = first; i < rows_.size(); ++i) unate.add(rows_[i]);
  remove_contained(unate);
  for (std::size_t i = 0; i < unate.size(); ++i) result_.add(unate[i]);
}

// A row of one half that is also in the other does not depend on the variable; `dropped` are the
// doubles in the second half.
void UnateRecursion::raise_common(std::size_t first, std::size_t middle, std::vector<bool>& raised,
                                  std::vector<bool>& dropped) const {
  std::vector<std::size_t> order(result_.size() - first);
  std::iota(order.begin(), order.end(), first);
  const auto compare = [&](std::size_t a, std::size_t b) {
    return std::lexicographical_compare_three_way(result_[a].begin(), result_[a].end(),
                                                  result_[b].begin(), result_[b].end());
  };
  std::ranges::stable_sort(order, [&](auto a, auto b) { return compare(a, b) < 0; });
  for (std::size_t i = 0; i + 1 < order.size(); ++i) {
    const std::size_t a = order[i], b = order[i + 1];
    if (a >= middle || b < middle || compare(a, b) != 0) continue;
    raised[a - first] = true;
    dropped[b - first] = true;
  }
}

// A row that lies within a row of the other half is completed by that one.
void UnateRecursion::raise_contained(std::size_t first, std::size_t middle,
                                     std::vector<bool>& raised) const {
  constexpr std::size_t most_pairs = 1'000'000;
  if ((middle - first) * (result_.size() - middle) > most_pairs) return;
  for (std::size_t a = first; a < middle; ++a) {
    for (std::size_t b = middle; b < result_.size(); ++b) {
      if (!raised[a - first] && contains(result_[b], result_[a])) raised[a - first] = true;
      if (!raised[b - first] && contains(result_[a], result_[b])) raised[b - first] = true;
    }
  }
}

// Rows in [first, middle) are of the half where the variable is 0, those after it where it is 1.
void UnateRecursion::merge(std::size_t first, std::size_t middle, std::size_t position) {
  std::vector<bool> raised(result_.size() - first), dropped(result_.size() - first);
  raise_common(first, middle, raised, dropped);
  raise_contained(first, middle, raised);
  const std::size_t shift = position % positions_per_word * 2;
  for (std::size_t i = first; i < result_.size(); ++i) {
    if (raised[i - first]) continue;
    Word& word = result_[i][position / positions_per_word];
    word &= ~(Word{i < middle ? 2u : 1u} << shift);
  }
  result_.filter(first, [&](std::size_t i) { return !dropped[i - first]; });
}

void UnateRecursion::solve(std::size_t first) {
  summary_.read(rows_, first);
  if (summary_.has_full_row() || summary_.is_unate())
    return goal_ == Goal::complement ? complement_unate(first) : simplify_unate(first);
  const std::size_t position = chooser_.choose(rows_, first, summary_);
  const std::size_t last = rows_.size(), result_first = result_.size();
  add_cofactors(rows_, first, last, position, 1);
  solve(last);
  rows_.truncate(last);
  const std::size_t middle = result_.size();
  add_cofactors(rows_, first, last, position, 2);
  solve(last);
  rows_.truncate(last);
  merge(result_first, middle, position);
}

Cover sorted_cover(const PackedCover& rows) {
  Cover cover = rows.unpacked();
  cover.sort();
  return cover;
}

[[maybe_unused]] bool is_unate(const PackedCover& rows) {
  ColumnSummary summary(rows.width());
  summary.read(rows, 0);
  return summary.is_unate();
}

}  // namespace

Cover complement(const Cover& cover) {
  if (base::verbosity() >= 6) std::cerr << "\nCover to be complemented:\n" << to_string(cover);
  PackedCover rows = UnateRecursion(PackedCover(cover), UnateRecursion::Goal::complement).run();
  constexpr std::size_t most_rows_compared = 10'000;  // each with each
  if (rows.size() <= most_rows_compared) remove_contained(rows);
  const Cover result = sorted_cover(rows);
  if (base::verbosity() >= 6) std::cerr << "\nComplemented cover:\n" << to_string(result);
  return result;
}

Cover unate_complement(const Cover& cover, const ProductBounds& bounds) {
  if (base::verbosity() >= 6) std::cerr << "\nCover before complement:\n" << to_string(cover);
  const PackedCover rows(cover);
  assert(is_unate(rows));
  const Cover result =
      sorted_cover(UnateRecursion(rows, UnateRecursion::Goal::complement, bounds).run());
  // The input once more: this has always been so, and logs are compared.
  if (base::verbosity() >= 6) std::cerr << "\nCover after complement:\n" << to_string(cover);
  return result;
}

PackedCover simplify(const PackedCover& cover) {
  PackedCover result = UnateRecursion(cover, UnateRecursion::Goal::simplify).run();
  remove_contained(result);
  return result;
}

}  // namespace vorel::toolkit
