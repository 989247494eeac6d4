#include "configuration/affine_relations.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <numeric>
#include <utility>

namespace vorel::configuration {
namespace {

constexpr std::int64_t largest_weight = 1 << 20;

// Divides by what all have in common. False if large numbers are left.
bool shorten(AffineRow& row) {
  std::int64_t divisor = 0;
  for (const std::int64_t weight : row) {
    if (weight != 0 && divisor != 1) divisor = std::gcd(divisor, weight);
  }
  if (divisor > 1) {
    for (std::int64_t& weight : row) weight /= divisor;
  }
  return std::ranges::all_of(
      row, [](std::int64_t weight) { return std::abs(weight) <= largest_weight; });
}

// A multiple of the row in which the other one, from the offset on, has taken away the weight.
bool cancel(AffineRow& row, std::size_t column, const AffineRow& other, std::size_t offset) {
  const std::int64_t taken = other[column - offset];
  assert(taken != 0);
  const std::int64_t divisor = std::gcd(row[column], taken);
  const std::int64_t factor = taken / divisor, subtracted = row[column] / divisor;
  if (factor != 1) {
    for (std::int64_t& weight : row) weight *= factor;
  }
  for (std::size_t i = 0; i < other.size(); ++i) row[offset + i] -= subtracted * other[i];
  return shorten(row);
}

struct Range {
  std::int64_t low, high;
};

Range range_of(const AffineRow& row, std::span<const Token> tokens) {
  Range range{row.back(), row.back()};
  for (std::size_t place = 0; place < tokens.size(); ++place) {
    const std::int64_t weight = row[place];
    if (tokens[place] != Token::absent) (weight < 0 ? range.low : range.high) += weight;
    if (tokens[place] == Token::present) (weight < 0 ? range.high : range.low) += weight;
  }
  return range;
}

void substitute(AffineRow& row, std::size_t offset, std::span<const Token> tokens) {
  for (std::size_t place = 0; place < tokens.size(); ++place) {
    if (tokens[place] == Token::unknown) continue;
    if (tokens[place] == Token::present) row.back() += row[offset + place];
    row[offset + place] = 0;
  }
}

}  // namespace

std::int64_t value_of(const AffineRow& row, std::span<const Token> tokens) {
  std::int64_t value = row.back();
  for (std::size_t place = 0; place < tokens.size(); ++place) {
    if (tokens[place] == Token::present) value += row[place];
  }
  return value;
}

bool propagate(std::span<const AffineRow> rows, std::span<Token> tokens) {
  for (bool changed = true; changed;) {
    changed = false;
    for (const AffineRow& row : rows) {
      const Range range = range_of(row, tokens);
      if (range.low > 0 || range.high < 0) return false;
      if (range.low == range.high || (range.low < 0 && range.high > 0)) continue;
      changed = true;  // some token is unknown, and only one value of it is possible
      for (std::size_t place = 0; place < tokens.size(); ++place) {
        if (row[place] == 0 || tokens[place] != Token::unknown) continue;
        const bool is_present = (row[place] < 0) == (range.low == 0);
        tokens[place] = is_present ? Token::present : Token::absent;
      }
    }
  }
  return true;
}

bool AffineBasis::assign(std::span<const AffineRow> rows, std::span<const Token> tokens) {
  tokens_.assign(tokens.begin(), tokens.end());
  rows_.clear();
  leading_.clear();
  for (AffineRow row : rows) {
    if (!reduce(row)) continue;
    const auto leading = std::ranges::find_if(row, [](std::int64_t weight) { return weight != 0; });
    if (leading == row.end()) continue;
    if (leading + 1 == row.end()) return false;
    leading_.push_back(static_cast<std::size_t>(leading - row.begin()));
    rows_.push_back(std::move(row));
  }
  return true;
}

bool AffineBasis::reduce(AffineRow& pair) const {
  const std::size_t offset = pair.size() - tokens_.size() - 1;
  substitute(pair, offset, tokens_);
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const std::size_t column = offset + leading_[i];
    if (pair[column] != 0 && !cancel(pair, column, rows_[i], offset)) return false;
  }
  return true;
}

std::vector<AffineRow> rows_without_rest(std::vector<AffineRow> pairs, std::size_t row_length) {
  const std::size_t length = pairs.empty() ? row_length : pairs.front().size();
  for (std::size_t column = row_length; column < length; ++column) {
    const auto leaves = [column](const AffineRow& pair) { return pair[column] != 0; };
    const auto zeros = [](const AffineRow& pair) { return std::ranges::count(pair, 0); };
    // What is subtracted from others had better be short.
    auto shortest = pairs.end();
    for (auto pair = pairs.begin(); pair != pairs.end(); ++pair) {
      if (leaves(*pair) && (shortest == pairs.end() || zeros(*pair) > zeros(*shortest)))
        shortest = pair;
    }
    if (shortest == pairs.end()) continue;
    std::iter_swap(shortest, pairs.end() - 1);
    const AffineRow taken = std::move(pairs.back());
    pairs.pop_back();
    std::erase_if(pairs,
                  [&](AffineRow& pair) { return leaves(pair) && !cancel(pair, column, taken, 0); });
  }
  for (AffineRow& pair : pairs) {
    pair.resize(row_length);
    shorten(pair);
  }
  return pairs;
}

}  // namespace vorel::configuration
