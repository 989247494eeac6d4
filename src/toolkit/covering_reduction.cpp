#include "toolkit/covering_reduction.h"

#include <algorithm>
#include <cassert>

#include "base/sort_unique.h"

namespace vorel::toolkit {
namespace {

using Numbers = std::vector<std::uint32_t>;

bool includes(const Numbers& larger, const Numbers& smaller) {
  return larger.size() >= smaller.size() && std::ranges::includes(larger, smaller);
}

// One bit for several numbers each: a list can be within another only if its bits are.
std::vector<std::uint64_t> signatures(const std::vector<Numbers>& lists) {
  std::vector<std::uint64_t> result(lists.size(), 0);
  for (std::size_t i = 0; i < lists.size(); ++i)
    for (const std::uint32_t number : lists[i]) result[i] |= std::uint64_t{1} << number % 64;
  return result;
}

template <class Drop>
bool erase_rows(std::vector<Numbers>& rows, const Drop& drop) {
  const std::size_t before = rows.size();
  std::size_t kept = 0;
  for (std::size_t r = 0; r < before; ++r) {
    if (drop(r)) continue;
    if (kept != r) rows[kept] = std::move(rows[r]);
    ++kept;
  }
  rows.resize(kept);
  return kept != before;
}

}  // namespace

CoveringReduction::CoveringReduction(const CoveringProblem& problem)
    : weights_{problem.weights}, rows_{problem.rows} {
  base::sort_unique(rows_);
  bool changed = true;
  while (changed) {
    index();
    changed = take_essential();
    if (changed) index();
    if (drop_rows()) changed = true, index();
    if (drop_columns()) changed = true;
  }
}

void CoveringReduction::index() {
  rows_of_.assign(weights_.size(), {});
  for (std::uint32_t r = 0; r < rows_.size(); ++r) {
    assert(!rows_[r].empty() && "a row that nothing covers");
    for (const std::uint32_t c : rows_[r]) rows_of_[c].push_back(r);
  }
}

bool CoveringReduction::take_essential() {
  std::vector<bool> taken(weights_.size(), false);
  for (const Numbers& row : rows_) {
    if (row.size() != 1 || taken[row.front()]) continue;
    taken[row.front()] = true;
    essential_.push_back(row.front());
  }
  return erase_rows(rows_, [&](std::size_t r) {
    return std::ranges::any_of(rows_[r], [&](std::uint32_t c) { return taken[c]; });
  });
}

// A row is met with any row within it. Such rows have the row's rarest column only if they are met
// by way of one of their own, so each row looks for the larger ones.
bool CoveringReduction::drop_rows() {
  std::vector<bool> dropped(rows_.size(), false);
  const std::vector<std::uint64_t> signature = signatures(rows_);
  for (std::uint32_t r = 0; r < rows_.size(); ++r) {
    if (dropped[r]) continue;
    const std::uint32_t rarest = *std::ranges::min_element(
        rows_[r], {}, [&](std::uint32_t c) { return rows_of_[c].size(); });
    for (const std::uint32_t larger : rows_of_[rarest]) {
      if (larger == r || dropped[larger] || (signature[r] & ~signature[larger]) != 0) continue;
      dropped[larger] = includes(rows_[larger], rows_[r]);
    }
  }
  return erase_rows(rows_, [&](std::size_t r) { return dropped[r]; });
}

// A column gives way to one that is in all its rows and no heavier.
bool CoveringReduction::drop_columns() {
  std::vector<bool> dropped(weights_.size(), false);
  const std::vector<std::uint64_t> signature = signatures(rows_of_);
  bool any = false;
  for (std::uint32_t c = 0; c < rows_of_.size(); ++c) {
    if (rows_of_[c].empty()) continue;
    const std::uint32_t shortest = *std::ranges::min_element(
        rows_of_[c], {}, [&](std::uint32_t r) { return rows_[r].size(); });
    dropped[c] = std::ranges::any_of(rows_[shortest], [&](std::uint32_t other) {
      return other != c && !dropped[other] && weights_[other] <= weights_[c] &&
             (signature[c] & ~signature[other]) == 0 && includes(rows_of_[other], rows_of_[c]);
    });
    any = any || dropped[c];
  }
  for (Numbers& row : rows_) std::erase_if(row, [&](std::uint32_t c) { return dropped[c]; });
  return any;
}

CoveringProblem CoveringReduction::core() {
  CoveringProblem core;
  original_.clear();
  Numbers renumbered(weights_.size(), 0);
  index();
  for (std::uint32_t c = 0; c < weights_.size(); ++c) {
    if (rows_of_[c].empty()) continue;
    renumbered[c] = static_cast<std::uint32_t>(original_.size());
    original_.push_back(c);
    core.weights.push_back(weights_[c]);
  }
  core.rows = rows_;
  for (Numbers& row : core.rows)
    for (std::uint32_t& c : row) c = renumbered[c];
  return core;
}

}  // namespace vorel::toolkit
