#include "toolkit/expand.h"

#include <algorithm>
#include <limits>

namespace vorel::toolkit {
namespace {

// Beyond this many sets of literals to keep, the best one so far is good enough.
constexpr std::size_t most_keeps = 64;

std::size_t size_of(ConstRow positions) {
  std::size_t size = 0;
  for (const Word word : positions) size += static_cast<std::size_t>(std::popcount(word));
  return size;
}

bool is_single(ConstRow positions) {
  Word only = 0;
  for (const Word word : positions) {
    if (word == 0) continue;
    if (only != 0 || (word & (word - 1)) != 0) return false;
    only = word;
  }
  return only != 0;
}

bool meet(ConstRow a, ConstRow b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if ((a[i] & b[i]) != 0) return true;
  return false;
}

}  // namespace

// The rows of the OFF-set that the literal there does not keep the cube off.
ConstRow Expander::agreeing(ConstRow row, std::size_t position) const {
  const Word values = row[position / positions_per_word] >> position % positions_per_word * 2;
  return columns_.admitting(position, values & 3);
}

// Most rows of a dense OFF-set are settled by literals that alone block some row. These are found
// by a count over the columns, so that the matrix has only what is left.
void Expander::keep_sole_literals(ConstRow row) {
  blocked_.assign(columns_.set_words(), 0);
  not_alone_.assign(columns_.set_words(), 0);
  for_each_position(literals_, [&](std::size_t position) {
    const ConstRow agrees = agreeing(row, position);
    for (std::size_t k = 0; k < agrees.size(); ++k) {
      not_alone_[k] |= blocked_[k] & ~agrees[k];
      blocked_[k] |= ~agrees[k];
    }
  });
  unsettled_.assign(columns_.all_rows().begin(), columns_.all_rows().end());
  kept_.assign(row.size(), 0);
  for_each_position(literals_, [&](std::size_t position) {
    const ConstRow agrees = agreeing(row, position);
    Word sole = 0;
    for (std::size_t k = 0; k < agrees.size(); ++k)
      sole |= columns_.all_rows()[k] & ~agrees[k] & ~not_alone_[k];
    if (sole == 0) return;
    kept_[position / positions_per_word] |= Word{1} << position % positions_per_word * 2;
    for (std::size_t k = 0; k < agrees.size(); ++k) unsettled_[k] &= agrees[k];
  });
}

void Expander::block(ConstRow row) {
  literals_.resize(row.size());
  for (std::size_t k = 0; k < row.size(); ++k) literals_[k] = literal_positions(row[k]);
  keep_sole_literals(row);
  blocking_.truncate(0);
  for_each_row(unsettled_, [&](std::size_t i) {
    const Row conflict = blocking_.add_full();
    for (std::size_t k = 0; k < row.size(); ++k) conflict[k] = empty_positions(row[k] & off_[i][k]);
    assert(size_of(conflict) != 0 && "the cube meets the OFF-set");
  });
}

// Most rows need a literal that is kept already; they are left out at once.
void Expander::want(ConstRow row, const PackedCover& on) {
  wanted_.truncate(0);
  for (std::size_t i = 0; i < on.size(); ++i) {
    Word any = 0, kept = 0;
    for (std::size_t k = 0; k < row.size(); ++k) {
      const Word missing = on[i][k] & ~row[k];
      any |= missing;
      kept |= missing & both_bits(kept_[k]);
    }
    if (any == 0 || kept != 0) continue;
    const Row needed = wanted_.add_full();
    for (std::size_t k = 0; k < row.size(); ++k) {
      const Word missing = on[i][k] & ~row[k];
      needed[k] = (missing | missing >> 1) & low_bits;
    }
  }
}

// A literal that alone blocks a row of the OFF-set stays, and what it blocks is settled. Literals
// that block nothing any more leave.
void Expander::keep_essential() {
  for (std::size_t i = 0; i < blocking_.size(); ++i)
    if (is_single(blocking_[i]))
      for (std::size_t k = 0; k < kept_.size(); ++k) kept_[k] |= blocking_[i][k];
  blocking_.filter(0, [&](std::size_t i) { return !meet(blocking_[i], kept_); });
  for (std::size_t k = 0; k < kept_.size(); ++k) {
    Word blocks = 0;
    for (std::size_t i = 0; i < blocking_.size(); ++i) blocks |= blocking_[i][k];
    literals_[k] &= blocks;
  }
}

bool Expander::is_feasible(ConstRow positions) const {
  if (meet(positions, kept_)) return false;
  for (std::size_t i = 0; i < blocking_.size(); ++i)
    if (contains(positions, blocking_[i])) return false;
  return true;
}

// What has been raised is no longer wanted; what is already covered is not a reason to raise.
void Expander::drop_infeasible() {
  for (std::size_t i = 0; i < wanted_.size(); ++i)
    for (std::size_t k = 0; k < kept_.size(); ++k) wanted_[i][k] &= literals_[k] | kept_[k];
  wanted_.filter(
      0, [&](std::size_t i) { return size_of(wanted_[i]) != 0 && is_feasible(wanted_[i]); });
}

// The one whose literals also give most of the others; then the one with the fewest literals.
std::size_t Expander::best_wanted() const {
  std::size_t best = 0, most = 0, fewest = 0;
  for (std::size_t i = 0; i < wanted_.size(); ++i) {
    std::size_t given = 0;
    for (std::size_t j = 0; j < wanted_.size(); ++j) given += contains(wanted_[i], wanted_[j]);
    const std::size_t size = size_of(wanted_[i]);
    if (given < most || (given == most && size >= fewest)) continue;
    best = i;
    most = given;
    fewest = size;
  }
  return best;
}

void Expander::raise(ConstRow positions) {
  for (std::size_t k = 0; k < literals_.size(); ++k) {
    literals_[k] &= ~positions[k];
    for (std::size_t i = 0; i < blocking_.size(); ++i) blocking_[i][k] &= literals_[k];
  }
}

// Keeps the smallest of the sets of literals that still block everything.
void Expander::keep_fewest() {
  transversals_.clear();
  for (std::size_t i = 0; i < blocking_.size(); ++i) transversals_.add_set(blocking_[i]);
  std::vector<Word> best;
  std::size_t fewest = std::numeric_limits<std::size_t>::max(), seen = 0;
  transversals_.for_each([&](ConstRow positions) {
    if (const std::size_t size = size_of(positions); size < fewest) {
      fewest = size;
      best.assign(positions.begin(), positions.end());
    }
    return ++seen < most_keeps;
  });
  for (std::size_t k = 0; k < best.size(); ++k) kept_[k] |= best[k];
}

void Expander::expand(Row row, const PackedCover& on) {
  block(row);
  want(row, on);
  for (;;) {
    keep_essential();
    drop_infeasible();
    if (wanted_.empty()) break;
    const auto chosen = wanted_[best_wanted()];
    raise(std::vector<Word>(chosen.begin(), chosen.end()));
  }
  if (!blocking_.empty()) keep_fewest();
  for (std::size_t k = 0; k < row.size(); ++k)
    row[k] |= both_bits(literal_positions(row[k]) & ~kept_[k]);
}

void Expander::for_each_prime(ConstRow row, const std::function<bool(ConstRow prime)>& visit) {
  block(row);
  keep_essential();
  transversals_.clear();
  for (std::size_t i = 0; i < blocking_.size(); ++i) transversals_.add_set(blocking_[i]);
  std::vector<Word> prime(row.size());
  transversals_.for_each([&](ConstRow others) {
    for (std::size_t k = 0; k < row.size(); ++k)
      prime[k] = row[k] | both_bits(literal_positions(row[k]) & ~(kept_[k] | others[k]));
    return visit(prime);
  });
}

}  // namespace vorel::toolkit
