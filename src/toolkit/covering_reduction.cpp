#include "toolkit/covering_reduction.h"

#include <algorithm>
#include <cassert>
#include <numeric>

namespace vorel::toolkit {
namespace {

using Numbers = std::vector<std::uint32_t>;

// In ascending order, each once.
NumberLists sorted(const NumberLists& lists) {
  Numbers order(lists.size());
  std::iota(order.begin(), order.end(), 0u);
  std::ranges::sort(order, [&](std::uint32_t a, std::uint32_t b) {
    return std::ranges::lexicographical_compare(lists[a], lists[b]);
  });
  NumberLists result;
  for (const std::uint32_t i : order) {
    assert(!lists[i].empty() && "a row that nothing covers");
    if (result.empty() || !std::ranges::equal(result[result.size() - 1], lists[i]))
      result.add(lists[i]);
  }
  return result;
}

}  // namespace

CoveringReduction::Side::Side(NumberLists all)
    : lists{std::move(all)}, signatures(lists.size()), has_shrunk(lists.size(), true) {
  for (std::size_t i = 0; i < lists.size(); ++i) sign(i);
}

void CoveringReduction::Side::sign(std::size_t i) {
  signatures[i] = 0;
  for (const std::uint32_t number : lists[i]) signatures[i] |= std::uint64_t{1} << number % 64;
}

bool CoveringReduction::Side::includes(std::uint32_t larger, std::uint32_t smaller) const {
  return (signatures[smaller] & ~signatures[larger]) == 0 &&
         lists[larger].size() >= lists[smaller].size() &&
         std::ranges::includes(lists[larger], lists[smaller]);
}

CoveringReduction::CoveringReduction(const CoveringProblem& problem)
    : weights_{problem.weights},
      rows_{sorted(problem.rows)},
      columns_{rows_.lists.transposed(weights_.size())} {
  bool changed = true;
  while (changed) {
    changed = take_essential();
    changed = drop_rows() || changed;
    changed = drop_columns() || changed;
  }
}

// Empties the lists dropped, and takes their numbers out of the lists on the other side. Whether
// there were any.
bool CoveringReduction::erase_dropped(Side& side, Side& others) {
  Numbers touched;
  for (const std::uint32_t i : side.dropped) {
    touched.insert(touched.end(), side.lists[i].begin(), side.lists[i].end());
    side.lists.clear(i);
  }
  for (const std::uint32_t other : touched) others.has_shrunk[other] = false;
  for (const std::uint32_t other : touched) {
    if (others.has_shrunk[other]) continue;
    others.lists.erase_if(other, [&](std::uint32_t i) { return side.lists[i].empty(); });
    others.sign(other);
    others.has_shrunk[other] = true;
  }
  const bool any = !side.dropped.empty();
  side.dropped.clear();
  return any;
}

bool CoveringReduction::take_essential() {
  const std::size_t before = essential_.size();
  for (std::uint32_t r = 0; r < rows_.lists.size(); ++r) {
    if (rows_.lists[r].size() != 1) continue;
    const std::uint32_t column = rows_.lists[r].front();
    essential_.push_back(column);
    for (const std::uint32_t met : columns_.lists[column]) rows_.dropped.push_back(met);
    erase_dropped(rows_, columns_);
  }
  return essential_.size() != before;
}

// A row is met with any row within it. Such rows have the row's rarest column only if they are met
// by way of one of their own, so each row looks for the larger ones.
bool CoveringReduction::drop_rows() {
  std::vector<bool> dropped(rows_.lists.size(), false);
  for (std::uint32_t r = 0; r < rows_.lists.size(); ++r) {
    if (dropped[r] || !rows_.has_shrunk[r] || rows_.lists[r].empty()) continue;
    rows_.has_shrunk[r] = false;
    const std::uint32_t rarest = *std::ranges::min_element(
        rows_.lists[r], {}, [&](std::uint32_t c) { return columns_.lists[c].size(); });
    for (const std::uint32_t larger : columns_.lists[rarest]) {
      if (larger == r || dropped[larger] || !rows_.includes(larger, r)) continue;
      dropped[larger] = true;
      rows_.dropped.push_back(larger);
    }
  }
  return erase_dropped(rows_, columns_);
}

// A column gives way to one that is in all its rows and no heavier.
bool CoveringReduction::drop_columns() {
  std::vector<bool> dropped(weights_.size(), false);
  for (std::uint32_t c = 0; c < columns_.lists.size(); ++c) {
    if (!columns_.has_shrunk[c] || columns_.lists[c].empty()) continue;
    columns_.has_shrunk[c] = false;
    const std::uint32_t shortest = *std::ranges::min_element(
        columns_.lists[c], {}, [&](std::uint32_t r) { return rows_.lists[r].size(); });
    dropped[c] = std::ranges::any_of(rows_.lists[shortest], [&](std::uint32_t other) {
      return other != c && !dropped[other] && weights_[other] <= weights_[c] &&
             columns_.includes(other, c);
    });
    if (dropped[c]) columns_.dropped.push_back(c);
  }
  return erase_dropped(columns_, rows_);
}

CoveringProblem CoveringReduction::core() {
  CoveringProblem core;
  original_.clear();
  Numbers renumbered(weights_.size(), 0);
  for (std::uint32_t c = 0; c < weights_.size(); ++c) {
    if (columns_.lists[c].empty()) continue;
    renumbered[c] = static_cast<std::uint32_t>(original_.size());
    original_.push_back(c);
    core.weights.push_back(weights_[c]);
  }
  Numbers row;
  for (std::size_t r = 0; r < rows_.lists.size(); ++r) {
    if (rows_.lists[r].empty()) continue;
    row.clear();
    for (const std::uint32_t c : rows_.lists[r]) row.push_back(renumbered[c]);
    core.rows.add(row);
  }
  return core;
}

}  // namespace vorel::toolkit
