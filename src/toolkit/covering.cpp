#include "toolkit/covering.h"

#include <algorithm>
#include <cassert>
#include <numeric>

#include "toolkit/covering_reduction.h"

namespace vorel::toolkit {
namespace {

using Numbers = std::vector<std::uint32_t>;

// Local search in the space of choices that leave some rows without a column [GWLY-2015]. A row
// that stays without one weighs more and more, so that the search leaves every dead end. Ties are
// broken by the time of the last change, then by number: the same on every run.
class LocalSearch {
 public:
  explicit LocalSearch(const CoveringProblem& problem);
  Numbers run(const CoveringParams& params);

 private:
  struct Column {
    std::int64_t gain = 0;      // weight of the rows whose state a change of this column changes
    std::uint32_t changed = 0;  // the step of its last change
    bool chosen = false;
    bool may_enter = true;  // something near it has changed since it left
  };

  void add(std::uint32_t column);
  void remove(std::uint32_t column);
  void change_gains(std::uint32_t row, std::int64_t by, bool chosen);
  void cover_all();
  void drop_needless();
  std::uint32_t cheapest_loss() const;
  std::uint32_t best_entry(const Numbers& row) const;
  bool is_better(std::uint32_t a, std::uint32_t b) const;
  void record();

  const CoveringProblem& problem_;
  std::vector<Numbers> rows_of_;  // for each column
  std::vector<Column> columns_;
  std::vector<std::int64_t> row_weights_;
  Numbers times_covered_;
  Numbers uncovered_;  // rows, the oldest first
  Numbers chosen_;     // columns, the oldest first
  std::uint64_t weight_ = 0, best_weight_ = ~std::uint64_t{0};
  Numbers best_;
  std::uint32_t step_ = 0;
};

LocalSearch::LocalSearch(const CoveringProblem& problem)
    : problem_{problem},
      rows_of_(problem.weights.size()),
      columns_(problem.weights.size()),
      row_weights_(problem.rows.size(), 1),
      times_covered_(problem.rows.size(), 0),
      uncovered_(problem.rows.size()) {
  std::iota(uncovered_.begin(), uncovered_.end(), 0u);
  for (std::uint32_t r = 0; r < problem.rows.size(); ++r) {
    for (const std::uint32_t c : problem.rows[r]) {
      rows_of_[c].push_back(r);
      ++columns_[c].gain;
    }
  }
}

void LocalSearch::change_gains(std::uint32_t row, std::int64_t by, bool chosen) {
  for (const std::uint32_t c : problem_.rows[row])
    if (columns_[c].chosen == chosen) columns_[c].gain += by;
}

void LocalSearch::add(std::uint32_t column) {
  assert(!columns_[column].chosen);
  weight_ += problem_.weights[column];
  columns_[column].changed = step_;
  for (const std::uint32_t r : rows_of_[column]) {
    const std::int64_t w = row_weights_[r];
    if (++times_covered_[r] == 1) {
      change_gains(r, -w, false);
      columns_[column].gain += w;  // it has just lost this with the others, as not yet chosen
      uncovered_.erase(std::ranges::find(uncovered_, r));
    } else if (times_covered_[r] == 2) {
      change_gains(r, -w, true);
    }
    for (const std::uint32_t c : problem_.rows[r]) columns_[c].may_enter = true;
  }
  columns_[column].chosen = true;
  chosen_.push_back(column);
}

void LocalSearch::remove(std::uint32_t column) {
  assert(columns_[column].chosen);
  weight_ -= problem_.weights[column];
  columns_[column].changed = step_;
  columns_[column].chosen = false;
  chosen_.erase(std::ranges::find(chosen_, column));
  for (const std::uint32_t r : rows_of_[column]) {
    const std::int64_t w = row_weights_[r];
    if (--times_covered_[r] == 0) {
      change_gains(r, w, false);
      columns_[column].gain -= w;
      uncovered_.push_back(r);
    } else if (times_covered_[r] == 1) {
      change_gains(r, w, true);
    }
    for (const std::uint32_t c : problem_.rows[r]) columns_[c].may_enter = true;
  }
  columns_[column].may_enter = false;
}

// More gain for its weight; of equals the one left alone for longer, then the first.
bool LocalSearch::is_better(std::uint32_t a, std::uint32_t b) const {
  const std::int64_t left = columns_[a].gain * std::int64_t{problem_.weights[b]};
  const std::int64_t right = columns_[b].gain * std::int64_t{problem_.weights[a]};
  if (left != right) return left > right;
  return columns_[a].changed < columns_[b].changed;
}

std::uint32_t LocalSearch::best_entry(const Numbers& row) const {
  std::uint32_t best = row.front();
  bool found = false;
  for (const std::uint32_t c : row) {
    if (!columns_[c].may_enter) continue;
    if (!found || is_better(c, best)) best = c;
    found = true;
  }
  return best;
}

// The chosen column that is missed least for its weight; of equals the one in it for longest.
std::uint32_t LocalSearch::cheapest_loss() const {
  assert(!chosen_.empty());
  std::uint32_t best = chosen_.front();
  for (const std::uint32_t c : chosen_) {
    const std::int64_t loss = columns_[c].gain * std::int64_t{problem_.weights[best]};
    if (loss < columns_[best].gain * std::int64_t{problem_.weights[c]}) best = c;
  }
  return best;
}

void LocalSearch::cover_all() {
  while (!uncovered_.empty()) {
    add(best_entry(problem_.rows[uncovered_.front()]));
    for (const std::uint32_t r : uncovered_) {
      ++row_weights_[r];
      change_gains(r, 1, false);
    }
  }
}

void LocalSearch::drop_needless() {
  for (std::uint32_t c = cheapest_loss(); columns_[c].gain == 0; c = cheapest_loss()) remove(c);
}

void LocalSearch::record() {
  assert(uncovered_.empty());
  if (weight_ >= best_weight_) return;
  best_weight_ = weight_;
  best_ = chosen_;
}

Numbers LocalSearch::run(const CoveringParams& params) {
  if (problem_.rows.empty()) return {};
  while (!uncovered_.empty()) {
    std::uint32_t best = problem_.rows[uncovered_.front()].front();
    for (std::uint32_t c = 0; c < columns_.size(); ++c)
      if (!columns_[c].chosen && is_better(c, best)) best = c;
    add(best);
  }
  drop_needless();
  record();
  const std::size_t last_step =
      std::min<std::size_t>(problem_.rows.size() * params.steps_per_row, params.max_steps);
  for (step_ = 1; step_ <= last_step && best_.size() > 1; ++step_) {
    remove(cheapest_loss());
    if (best_.size() > 2) remove(cheapest_loss());
    cover_all();
    drop_needless();
    record();
  }
  return best_;
}

}  // namespace

std::vector<std::uint32_t> solve_covering(const CoveringProblem& problem,
                                          const CoveringParams& params) {
  CoveringReduction reduction(problem);
  const CoveringProblem core = reduction.core();
  std::vector<std::uint32_t> chosen = reduction.essential();
  for (const std::uint32_t c : LocalSearch(core).run(params))
    chosen.push_back(reduction.original(c));
  std::ranges::sort(chosen);
  return chosen;
}

}  // namespace vorel::toolkit
