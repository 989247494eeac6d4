#include "toolkit/irredundant.h"

#include <algorithm>
#include <numeric>

#include "toolkit/column_index.h"
#include "toolkit/tautology.h"

namespace vorel::toolkit {
namespace {

using Numbers = std::vector<std::uint32_t>;

// Parts that one cube of the ON-set may be split into, the fewer the more primes meet it. Beyond
// them one prime must contain it whole.
std::size_t most_parts(std::size_t primes) {
  return std::clamp<std::size_t>(50'000 / std::max<std::size_t>(primes, 1), 16, 256);
}

// Finds, for a cube, the parts that differ in which primes contain them.
class PartFinder {
 public:
  explicit PartFinder(const PackedCover& primes)
      : primes_{primes}, columns_{primes}, rows_{primes.width()}, summary_{primes.width()} {}

  // Appends a row for each part of the cube: the primes that contain the part. False if there are
  // too many parts; what has been appended is then removed.
  bool add_parts(ConstRow cube, NumberLists& parts);

 private:
  void find_primes(ConstRow cube);
  bool split(std::size_t first, NumberLists& parts);

  const PackedCover& primes_;
  const ColumnIndex columns_;
  std::vector<Word> meeting_, whole_;  // primes that meet the cube, that contain it
  Numbers containing_;                 // primes that contain the whole cube, and so each part
  Numbers part_;                       // scratch
  PackedCover rows_;                   // a stack of cofactors of the other primes
  Numbers numbers_;                    // which prime a row of the stack comes from
  ColumnSummary summary_;
  SplitChooser chooser_;
  std::size_t last_part_ = 0;
};

// Of unate rows, only one that is all dashes contains the point that all others avoid; a choice of
// rows without such a one is no tautology.
bool PartFinder::split(std::size_t first, NumberLists& parts) {
  summary_.read(rows_, first);
  if (summary_.is_unate()) {
    part_ = containing_;
    for (std::size_t i = first; i < rows_.size(); ++i)
      if (is_full(rows_[i])) part_.push_back(numbers_[i]);
    assert(!part_.empty() && "the primes contain the ON-set");
    std::ranges::sort(part_);
    parts.add(part_);
    return parts.size() <= last_part_;
  }
  const std::size_t position = chooser_.choose(rows_, first, summary_);
  const std::size_t last = rows_.size();
  bool go_on = true;
  for (const Word value_bit : {Word{1}, Word{2}}) {
    if (!go_on) break;
    for (std::size_t i = first; i < last; ++i)
      if (admits(rows_[i], position, value_bit)) numbers_.push_back(numbers_[i]);
    add_cofactors(rows_, first, last, position, value_bit);
    go_on = split(last, parts);
    rows_.truncate(last);
    numbers_.resize(last);
  }
  return go_on;
}

void PartFinder::find_primes(ConstRow cube) {
  meeting_.assign(columns_.all_rows().begin(), columns_.all_rows().end());
  whole_ = meeting_;
  for (std::size_t position = 0; position < primes_.width(); ++position) {
    const bool zero = admits(cube, position, 1), one = admits(cube, position, 2);
    const ConstRow admit_zero = columns_.admitting(position, 1);
    const ConstRow admit_one = columns_.admitting(position, 2);
    for (std::size_t k = 0; k < whole_.size(); ++k)
      whole_[k] &= (zero ? admit_zero[k] : all_bits) & (one ? admit_one[k] : all_bits);
    if (zero && one) continue;
    const ConstRow agreeing = zero ? admit_zero : admit_one;
    for (std::size_t k = 0; k < meeting_.size(); ++k) meeting_[k] &= agreeing[k];
  }
}

bool PartFinder::add_parts(ConstRow cube, NumberLists& parts) {
  rows_.truncate(0);
  numbers_.clear();
  containing_.clear();
  find_primes(cube);
  for_each_row(meeting_, [&](std::size_t i) {
    const auto number = static_cast<std::uint32_t>(i);
    if ((whole_[i / 64] >> i % 64 & 1) != 0) {
      containing_.push_back(number);
      return;
    }
    const Row row = rows_.add_full();
    for (std::size_t k = 0; k < row.size(); ++k) row[k] = primes_[i][k] | ~cube[k];
    numbers_.push_back(number);
  });
  const std::size_t before = parts.size();
  last_part_ = before + most_parts(rows_.size());
  if (split(0, parts)) return true;
  parts.truncate(before);
  return false;
}

class Irredundancy {
 public:
  Irredundancy(const PackedCover& primes, const PackedCover& on)
      : primes_{primes}, on_{on}, check_{primes.width()} {}
  PackedCover run(const CoveringParams& params);

 private:
  void add_rows();
  void add_whole(ConstRow cube);
  void drop_needless(Numbers& chosen);
  bool is_needed(const PackedCover& cover, std::uint32_t i, const std::vector<bool>& left_out);

  const PackedCover& primes_;
  const PackedCover& on_;
  TautologyCheck check_;
  CoveringProblem problem_;
  bool is_exact_ = true;  // every way to contain the ON-set meets the rows
};

// The primes that contain the cube, or if there is none, all that it takes.
void Irredundancy::add_whole(ConstRow cube) {
  is_exact_ = false;
  Numbers containing;
  for (std::uint32_t i = 0; i < primes_.size(); ++i)
    if (contains(primes_[i], cube)) containing.push_back(i);
  if (!containing.empty()) {
    problem_.rows.add(containing);
    return;
  }
  for (std::uint32_t i = 0; i < primes_.size(); ++i)
    if (intersect(primes_[i], cube)) problem_.rows.add({&i, 1});
}

void Irredundancy::add_rows() {
  PartFinder finder(primes_);
  for (std::size_t i = 0; i < on_.size(); ++i)
    if (!finder.add_parts(on_[i], problem_.rows)) add_whole(on_[i]);
  // One cube more must cost more than any literals it saves.
  const auto cube_weight = static_cast<std::uint32_t>(primes_.width() + 1);
  for (std::size_t i = 0; i < primes_.size(); ++i)
    problem_.weights.push_back(cube_weight + static_cast<std::uint32_t>(literals_of(primes_[i])));
}

bool Irredundancy::is_needed(const PackedCover& cover, std::uint32_t i,
                             const std::vector<bool>& left_out) {
  std::vector<Word> common(cover.stride());
  for (std::size_t j = 0; j < on_.size(); ++j) {
    if (!intersect(on_[j], cover[i])) continue;
    for (std::size_t k = 0; k < common.size(); ++k) common[k] = on_[j][k] & cover[i][k];
    if (!check_.contains_cube(cover, common, &left_out)) return true;
  }
  return false;
}

// Where rows asked for more than containment, something may be left out: most literals first.
void Irredundancy::drop_needless(Numbers& chosen) {
  PackedCover cover(primes_.width());
  for (const std::uint32_t i : chosen) cover.add(primes_[i]);
  Numbers order(chosen.size());
  std::iota(order.begin(), order.end(), 0u);
  std::ranges::stable_sort(order, std::greater{}, [&](auto i) { return literals_of(cover[i]); });
  std::vector<bool> left_out(chosen.size(), false);
  for (const std::uint32_t i : order) {
    left_out[i] = true;
    left_out[i] = !is_needed(cover, i, left_out);
  }
  Numbers kept;
  for (std::size_t i = 0; i < chosen.size(); ++i)
    if (!left_out[i]) kept.push_back(chosen[i]);
  chosen = std::move(kept);
}

PackedCover Irredundancy::run(const CoveringParams& params) {
  add_rows();
  Numbers chosen = solve_covering(problem_, params);
  if (!is_exact_) drop_needless(chosen);
  PackedCover cover(primes_.width());
  for (const std::uint32_t i : chosen) cover.add(primes_[i]);
  return cover;
}

}  // namespace

PackedCover irredundant(const PackedCover& primes, const PackedCover& on,
                        const CoveringParams& params) {
  return Irredundancy(primes, on).run(params);
}

}  // namespace vorel::toolkit
