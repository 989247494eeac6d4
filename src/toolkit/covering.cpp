#include "toolkit/covering.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <numeric>
#include <queue>
#include <span>
#include <utility>

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
  static constexpr std::uint32_t not_chosen = ~0u;

  // How much a chosen column is missed: the weight of the rows that it alone covers for its own
  // weight, as the bits of a float, which rise with it; below them the time when the column came,
  // in changes. So the least rank is that of the column to go, and no two are equal or zero.
  using Rank = std::uint64_t;
  static constexpr std::size_t block = 16;  // slots whose least rank is remembered
  static constexpr Rank stale = 0;          // it is to be found anew
  static constexpr Rank unbounded = ~Rank{0};

  struct Column {
    std::int64_t gain = 0;      // weight of the rows whose state a change of this column changes
    std::uint32_t weight = 0;   // its own
    std::uint32_t changed = 0;  // the step of its last change
    std::uint32_t slot = not_chosen;
    std::uint32_t left = 0;  // counts changes
    bool is_chosen() const { return slot != not_chosen; }
    // Of two fractions the smaller one has the smaller quotient, and equal ones have the same,
    // while a gain times a weight stays below 2^52.
    double gain_for_weight() const { return static_cast<double>(gain) / weight; }
  };
  void add(std::uint32_t column);
  void remove(std::uint32_t column);
  void leave_slot(Column& column);
  void change_gains(std::uint32_t row, std::int64_t by);
  void change_sole_gain(std::uint32_t row, std::int64_t by);
  bool may_enter(std::uint32_t column) const;
  void note_loss(const Column& column);
  void change_rank(std::size_t slot, Rank rank);
  Rank least_rank();
  std::uint32_t column_of(Rank least) const;
  void remove_cheapest() { remove(column_of(least_rank())); }
  void choose_greedily();
  void cover_all();
  void drop_needless();
  std::uint32_t best_entry(std::span<const std::uint32_t> row) const;
  bool is_better(const Column& a, const Column& b) const;
  void record();

  std::uint32_t step_ = 0, changes_ = 1;
  const NumberLists rows_, rows_of_;  // the columns of each row, the rows of each column
  std::vector<Column> columns_;
  std::vector<std::int64_t> row_weights_;
  Numbers times_covered_;
  Numbers chosen_of_row_;             // numbers of its chosen columns, joined by exclusive or
  Numbers touched_;                   // when a column of the row came or left; counts changes
  Numbers uncovered_;                 // rows, the oldest first
  Numbers slots_;                     // the chosen columns, in no order
  std::vector<Rank> ranks_;           // of the slots
  std::vector<Rank> least_of_block_;  // or stale
  std::uint64_t weight_ = 0, best_weight_ = ~std::uint64_t{0};
  Numbers best_;
};

LocalSearch::LocalSearch(const CoveringProblem& problem)
    : rows_{problem.rows},
      rows_of_{problem.rows.transposed(problem.weights.size())},
      columns_(problem.weights.size()),
      row_weights_(problem.rows.size(), 1),
      times_covered_(problem.rows.size(), 0),
      chosen_of_row_(problem.rows.size(), 0),
      touched_(problem.rows.size(), changes_),
      uncovered_(problem.rows.size()) {
  std::iota(uncovered_.begin(), uncovered_.end(), 0u);
  for (std::size_t c = 0; c < columns_.size(); ++c) {
    columns_[c].weight = problem.weights[c];
    columns_[c].gain = static_cast<std::int64_t>(rows_of_[c].size());
  }
}

// Of all columns of a row that has no chosen one.
void LocalSearch::change_gains(std::uint32_t row, std::int64_t by) {
  for (const std::uint32_t c : rows_[row]) columns_[c].gain += by;
}

// Of the only chosen column of a row.
void LocalSearch::change_sole_gain(std::uint32_t row, std::int64_t by) {
  Column& column = columns_[chosen_of_row_[row]];
  column.gain += by;
  note_loss(column);
}

// Whether something near the column has changed since it left.
bool LocalSearch::may_enter(std::uint32_t number) const {
  return std::ranges::any_of(rows_of_[number],
                             [&](std::uint32_t r) { return touched_[r] > columns_[number].left; });
}

void LocalSearch::add(std::uint32_t number) {
  Column& column = columns_[number];
  assert(!column.is_chosen());
  weight_ += column.weight;
  column.changed = step_;
  ++changes_;
  for (const std::uint32_t r : rows_of_[number]) {
    const std::int64_t w = row_weights_[r];
    if (++times_covered_[r] == 1) {
      change_gains(r, -w);
      column.gain += w;  // it has just lost this with the others, as not yet chosen
      uncovered_.erase(std::ranges::find(uncovered_, r));
    } else if (times_covered_[r] == 2) {
      change_sole_gain(r, -w);
    }
    chosen_of_row_[r] ^= number;
    touched_[r] = changes_;
  }
  column.slot = static_cast<std::uint32_t>(slots_.size());
  if (slots_.size() % block == 0) least_of_block_.push_back(unbounded);
  slots_.push_back(number);
  ranks_.push_back(changes_);
  note_loss(column);
}

void LocalSearch::leave_slot(Column& column) {
  const std::size_t last = slots_.size() - 1;
  const Rank moved = ranks_[last];
  change_rank(last, unbounded);
  if (column.slot != last) change_rank(column.slot, moved);
  slots_[column.slot] = slots_[last];
  columns_[slots_[last]].slot = column.slot;
  slots_.pop_back();
  ranks_.pop_back();
  if (last % block == 0) least_of_block_.pop_back();
  column.slot = not_chosen;
}

void LocalSearch::remove(std::uint32_t number) {
  Column& column = columns_[number];
  assert(column.is_chosen());
  weight_ -= column.weight;
  column.changed = step_;
  column.left = ++changes_;
  leave_slot(column);
  for (const std::uint32_t r : rows_of_[number]) {
    const std::int64_t w = row_weights_[r];
    chosen_of_row_[r] ^= number;
    touched_[r] = changes_;
    if (--times_covered_[r] == 0) {
      change_gains(r, w);
      column.gain -= w;
      uncovered_.push_back(r);
    } else if (times_covered_[r] == 1) {
      change_sole_gain(r, w);
    }
  }
}

// More gain for its weight; of equals the one left alone for longer, then the first.
bool LocalSearch::is_better(const Column& a, const Column& b) const {
  const std::int64_t left = a.gain * std::int64_t{b.weight};
  const std::int64_t right = b.gain * std::int64_t{a.weight};
  return left != right ? left > right : a.changed < b.changed;
}

std::uint32_t LocalSearch::best_entry(std::span<const std::uint32_t> row) const {
  std::uint32_t best = row.front();
  bool found = false;
  for (const std::uint32_t c : row) {
    if ((found && !is_better(columns_[c], columns_[best])) || !may_enter(c)) continue;
    best = c;
    found = true;
  }
  return best;
}

void LocalSearch::note_loss(const Column& column) {
  const float loss = static_cast<float>(column.gain) / static_cast<float>(column.weight);
  const auto since = static_cast<std::uint32_t>(ranks_[column.slot]);
  change_rank(column.slot, Rank{std::bit_cast<std::uint32_t>(loss)} << 32 | since);
}

void LocalSearch::change_rank(std::size_t slot, Rank rank) {
  Rank& least = least_of_block_[slot / block];
  if (rank <= least)
    least = rank;
  else if (ranks_[slot] == least)
    least = stale;
  ranks_[slot] = rank;
}

LocalSearch::Rank LocalSearch::least_rank() {
  assert(!slots_.empty());
  Rank least = unbounded;
  for (std::size_t b = 0; b < least_of_block_.size(); ++b) {
    if (least_of_block_[b] == stale) {
      const std::size_t last = std::min((b + 1) * block, ranks_.size());
      Rank found = unbounded;
      for (std::size_t i = b * block; i < last; ++i) found = std::min(found, ranks_[i]);
      least_of_block_[b] = found;
    }
    least = std::min(least, least_of_block_[b]);
  }
  return least;
}

std::uint32_t LocalSearch::column_of(Rank least) const {
  std::size_t slot = 0;
  while (least_of_block_[slot / block] != least) slot += block;
  while (ranks_[slot] != least) ++slot;
  return slots_[slot];
}

void LocalSearch::cover_all() {
  while (!uncovered_.empty()) {
    add(best_entry(rows_[uncovered_.front()]));
    for (const std::uint32_t r : uncovered_) {
      ++row_weights_[r];
      change_gains(r, 1);
    }
  }
}

void LocalSearch::drop_needless() {
  for (Rank least = least_rank(); least >> 32 == 0; least = least_rank()) remove(column_of(least));
}

void LocalSearch::record() {
  assert(uncovered_.empty());
  if (weight_ >= best_weight_) return;
  best_weight_ = weight_;
  best_ = slots_;
}

// Gains only fall here, so one that has not fallen since it was noted is the largest. Of equals the
// first column, but one of the oldest row comes before.
void LocalSearch::choose_greedily() {
  using Entry = std::pair<double, std::int64_t>;  // gain for weight, number times -1
  std::priority_queue<Entry> entries;
  for (std::size_t c = 0; c < columns_.size(); ++c)
    entries.emplace(columns_[c].gain_for_weight(), -static_cast<std::int64_t>(c));
  while (!uncovered_.empty()) {
    const auto [noted, number] = entries.top();
    auto best = static_cast<std::uint32_t>(-number);
    const double gain = columns_[best].gain_for_weight();
    if (columns_[best].is_chosen() || gain < noted) {
      entries.pop();
      if (!columns_[best].is_chosen()) entries.emplace(gain, number);
      continue;
    }
    const std::uint32_t oldest = rows_[uncovered_.front()].front();
    if (!is_better(columns_[best], columns_[oldest])) best = oldest;
    add(best);
  }
}

Numbers LocalSearch::run(const CoveringParams& params) {
  if (uncovered_.empty()) return {};
  choose_greedily();
  drop_needless();
  record();
  const std::size_t last_step =
      std::min<std::size_t>(row_weights_.size() * params.steps_per_row, params.max_steps);
  for (step_ = 1; step_ <= last_step && best_.size() > 1; ++step_) {
    remove_cheapest();
    if (best_.size() > 2) remove_cheapest();
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
