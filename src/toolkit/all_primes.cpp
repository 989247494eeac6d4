#include "toolkit/all_primes.h"

#include <array>

namespace vorel::toolkit {
namespace {

// A word holds the points of the first six variables, variable i being bit i of a point's number.
// Functions of fewer variables do not depend on the rest.
constexpr std::size_t inner_variables = 6, inner_sets = 64;

// Points of a word where the variable is 0.
constexpr std::array<Word, inner_variables> zero_points = {
    0x5555555555555555u, 0x3333333333333333u, 0x0f0f0f0f0f0f0f0fu,
    0x00ff00ff00ff00ffu, 0x0000ffff0000ffffu, 0x00000000ffffffffu};

std::size_t power_of_three(std::size_t exponent) {
  std::size_t power = 1;
  for (std::size_t i = 0; i < exponent; ++i) power *= 3;
  return power;
}

// The points of the row, as far as the first six variables go.
Word inner_points(ConstRow row) {
  Word points = all_bits;
  for (std::size_t i = 0; i < inner_variables; ++i) {
    if (!admits(row, i, 1)) points &= ~zero_points[i];
    if (!admits(row, i, 2)) points &= zero_points[i];
  }
  return points;
}

// A word for each set of dashes among the first six variables and each cube over the others, the
// outer ones: bit p tells something of the cube over all variables that contains point p. So equal
// bits stand for one cube, and that with 0 for each dash stands for all. An outer cube is a number
// to the base of three, with digit 2 for a dash.
class CubeTable {
 public:
  explicit CubeTable(std::size_t width)
      : outer_{width < inner_variables ? 0 : width - inner_variables},
        row_size_{power_of_three(outer_)},
        words_(inner_sets * row_size_, 0) {}

  std::size_t row_size() const { return row_size_; }
  const Word* row(std::size_t dashes) const { return words_.data() + dashes * row_size_; }

  // Sets the bits of the cubes that share a point with a row of the cover.
  void mark_meeting(const PackedCover& cover);
  void complement() {
    for (Word& word : words_) word = ~word;
  }

 private:
  void mark_points(ConstRow row, std::size_t variable, std::size_t outer, Word points);

  std::size_t outer_, row_size_;
  std::vector<Word> words_;
};

void CubeTable::mark_points(ConstRow row, std::size_t variable, std::size_t outer, Word points) {
  if (variable == outer_) {
    words_[outer] |= points;
    return;
  }
  for (const Word value_bit : {Word{1}, Word{2}})
    if (admits(row, inner_variables + variable, value_bit))
      mark_points(row, variable + 1, outer * 3 + value_bit - 1, points);
}

void CubeTable::mark_meeting(const PackedCover& cover) {
  for (std::size_t i = 0; i < cover.size(); ++i)
    mark_points(cover[i], 0, 0, inner_points(cover[i]));
  for (std::size_t power = 1; power < row_size_; power *= 3)
    for (std::size_t first = 0; first < row_size_; first += 3 * power)
      for (std::size_t u = first; u < first + power; ++u)
        words_[u + 2 * power] = words_[u] | words_[u + power];
  for (std::size_t dashes = 1; dashes < inner_sets; ++dashes) {
    const auto i = static_cast<std::size_t>(std::countr_zero(dashes));
    const Word* before = row(dashes & (dashes - 1));
    Word* after = words_.data() + dashes * row_size_;
    for (std::size_t u = 0; u < row_size_; ++u) {
      const Word zero = (before[u] | before[u] >> (1u << i)) & zero_points[i];
      after[u] = zero | zero << (1u << i);
    }
  }
}

class PrimeTable {
 public:
  PrimeTable(const PackedCover& on, const PackedCover& off)
      : width_{on.width()}, meets_on_{width_}, implicants_{width_} {
    meets_on_.mark_meeting(on);
    implicants_.mark_meeting(off);
    implicants_.complement();
    index_outer_rows();
  }
  std::optional<PackedCover> primes(std::size_t most);

 private:
  void index_outer_rows();
  void find_primes(std::size_t dashes);
  Word row_of(std::size_t dashes, std::size_t point, std::size_t outer) const;

  const std::size_t width_;
  CubeTable meets_on_, implicants_;
  std::vector<Word> outer_rows_;  // of a packed cover, dashes at the inner variables
  std::vector<Word> primes_;      // those with some set of inner dashes, by outer cube
};

void PrimeTable::index_outer_rows() {
  outer_rows_ = {all_bits};
  for (std::size_t i = inner_variables; i < width_; ++i) {
    std::vector<Word> next;
    for (const Word row : outer_rows_)
      for (const Word other_value : {Word{2}, Word{1}, Word{0}})
        next.push_back(row & ~(other_value << 2 * i));
    outer_rows_ = std::move(next);
  }
}

// An implicant is prime if with no literal less it is one.
void PrimeTable::find_primes(std::size_t dashes) {
  const std::size_t size = implicants_.row_size();
  const Word *implicants = implicants_.row(dashes), *meets_on = meets_on_.row(dashes);
  Word representatives = all_bits;
  for (std::size_t i = 0; i < inner_variables; ++i)
    if ((dashes >> i & 1) != 0) representatives &= zero_points[i];
  for (std::size_t u = 0; u < size; ++u) primes_[u] = implicants[u] & meets_on[u] & representatives;
  for (std::size_t i = 0; i < inner_variables; ++i) {
    if ((dashes >> i & 1) != 0) continue;
    const Word* larger = implicants_.row(dashes | std::size_t{1} << i);
    for (std::size_t u = 0; u < size; ++u) primes_[u] &= ~larger[u];
  }
  for (std::size_t power = 1; power < size; power *= 3) {
    for (std::size_t first = 0; first < size; first += 3 * power) {
      for (std::size_t u = first; u < first + power; ++u) {
        primes_[u] &= ~implicants[u + 2 * power];
        primes_[u + power] &= ~implicants[u + 2 * power];
      }
    }
  }
}

Word PrimeTable::row_of(std::size_t dashes, std::size_t point, std::size_t outer) const {
  Word row = outer_rows_[outer];
  for (std::size_t i = 0; i < inner_variables; ++i)
    if ((dashes >> i & 1) == 0)
      row &= ~((point >> i & 1) != 0 ? Word{1} << 2 * i : Word{2} << 2 * i);
  return row;
}

std::optional<PackedCover> PrimeTable::primes(std::size_t most) {
  PackedCover result(width_);
  primes_.resize(implicants_.row_size());
  for (std::size_t dashes = 0; dashes < inner_sets; ++dashes) {
    find_primes(dashes);
    for (std::size_t u = 0; u < primes_.size(); ++u) {
      for (Word rest = primes_[u]; rest != 0; rest &= rest - 1) {
        if (result.size() == most) return std::nullopt;
        const auto point = static_cast<std::size_t>(std::countr_zero(rest));
        result.add_full()[0] = row_of(dashes, point, u);
      }
    }
  }
  return result;
}

}  // namespace

std::optional<PackedCover> all_primes(const PackedCover& on, const PackedCover& off,
                                      std::size_t most) {
  assert(on.width() == off.width() && 0 < on.width() && on.width() <= most_table_variables);
  return PrimeTable(on, off).primes(most);
}

}  // namespace vorel::toolkit
