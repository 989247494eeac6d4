#include "decomposition/divisions.h"

#include <algorithm>
#include <set>
#include <span>
#include <utility>

#include "bdd/cover_bdd.h"
#include "toolkit/algebra.h"
#include "toolkit/divisors.h"

namespace vorel::decomposition {
namespace {

using toolkit::ConstRow, toolkit::PackedCover, toolkit::Row, toolkit::Word;

PackedCover single_row(std::size_t width, ConstRow row) {
  PackedCover cover(width);
  cover.add(row);
  return cover;
}

bool is_constant(const PackedCover& cover) {
  if (cover.empty()) return true;
  for (std::size_t i = 0; i < cover.size(); ++i)
    if (toolkit::is_full(cover[i])) return true;
  return false;
}

bool is_literal(const PackedCover& cover) {
  return cover.size() == 1 && toolkit::literals_of(cover[0]) == 1;
}

bool meets_any(ConstRow row, const PackedCover& cover) {
  for (std::size_t i = 0; i < cover.size(); ++i)
    if (toolkit::intersect(row, cover[i])) return true;
  return false;
}

// A row with dashes at the variables that the cover mentions.
std::vector<Word> unmentioned(const PackedCover& cover) {
  std::vector<Word> row(cover.stride(), toolkit::all_bits);
  for (std::size_t i = 0; i < cover.size(); ++i)
    for (std::size_t k = 0; k < row.size(); ++k)
      row[k] &= ~toolkit::both_bits(toolkit::literal_positions(cover[i][k]));
  return row;
}

class DivisorSearch {
 public:
  DivisorSearch(const bdd::Bdd& f, const bdd::SupportCover& form, std::size_t limit)
      : f_{f}, root_{form.cover}, support_{form.support}, limit_{limit} {
    for (const std::uint32_t v : support_) variables_.push_back(bdd::bdd_variable(v));
  }

  std::vector<DivisionByDivisor> run() {
    known_.insert(toolkit::sorted_words(root_));
    queue_terms();
    queue_kernels(root_, true);
    for (std::size_t next = 0; next < queue_.size(); ++next) {
      const Divisor divisor = std::move(queue_[next]);
      divide_by(divisor.cover, divisor.has_kernels);
    }
    return std::move(divisions_);
  }

 private:
  struct Divisor {
    PackedCover cover;
    bool has_kernels;  // that are not queued yet
  };

  bool is_full() const { return queue_.size() >= limit_ || visits_ >= most_visits; }

  void queue_any(PackedCover cover, bool has_kernels) {
    if (is_full() || !known_.insert(toolkit::sorted_words(cover)).second) return;
    queue_.push_back({std::move(cover), has_kernels});
  }
  void queue(PackedCover cover, bool has_kernels) {
    if (!is_constant(cover) && !is_literal(cover)) queue_any(std::move(cover), has_kernels);
  }

  // What the root is the sum of; or else the product of.
  void queue_terms() {
    if (root_.size() > 1) {
      for (std::size_t i = 0; i < root_.size(); ++i)
        queue_any(single_row(root_.width(), std::as_const(root_)[i]), false);
      return;
    }
    const std::span<const Word> cube = std::as_const(root_)[0];
    for (std::size_t position = 0; position < root_.width(); ++position) {
      PackedCover literal(root_.width());
      const std::size_t k = position / toolkit::positions_per_word;
      const Word both = Word{3} << position % toolkit::positions_per_word * 2;
      const Row row = literal.add_full();
      row[k] = cube[k] | ~both;
      queue_any(std::move(literal), false);
    }
  }

  // A kernel of a kernel is one of the whole, too.
  void queue_kernels(const PackedCover& cover, bool with_co_kernels) {
    toolkit::for_each_kernel(cover, [&](const PackedCover& kernel, ConstRow co_kernel) {
      ++visits_;
      queue(kernel, false);
      if (with_co_kernels) queue(single_row(cover.width(), co_kernel), false);
      return !is_full();
    });
  }

  void divide_by(const PackedCover& divisor, bool has_kernels) {
    toolkit::Division<PackedCover> plain = toolkit::divide(root_, divisor);
    DivisionByDivisor division{bdd_of(divisor), bdd_of(plain.quotient), bdd::Bdd(false), {}};
    toolkit::Division<PackedCover> negative =
        divide_by_complement(plain.remainder, divisor, division.d);
    division.q0 = bdd_of(negative.quotient);
    division.r = bdd_of(negative.remainder);
    assert((bdd::ite(division.d, division.q1, division.q0) | division.r) == f_);
    divisions_.push_back(std::move(division));
    queue(std::move(plain.quotient), true);
    queue(std::move(negative.quotient), true);
    queue(std::move(negative.remainder), true);
    if (has_kernels) queue_kernels(divisor, false);
  }

  // The complement may have very many cubes. But to divide anything, each of them must be in a row
  // that has no point of the divisor, and be all that the row says of the divisor's variables.
  toolkit::Division<PackedCover> divide_by_complement(const PackedCover& dividend,
                                                      const PackedCover& divisor,
                                                      const bdd::Bdd& d) const {
    const std::vector<Word> others = unmentioned(divisor);
    PackedCover parts(dividend.width());
    for (std::size_t i = 0; i < dividend.size(); ++i) {
      if (meets_any(dividend[i], divisor)) continue;
      const Row part = parts.add_full();
      for (std::size_t k = 0; k < part.size(); ++k) part[k] = dividend[i][k] | others[k];
    }
    if (parts.empty() || !(bdd_of(parts) == ~d)) return {PackedCover(dividend.width()), dividend};
    return toolkit::divide(dividend, cover_of(~d));
  }

  bdd::Bdd bdd_of(const PackedCover& cover) const {
    return bdd::bdd_of(cover.unpacked(), variables_);
  }

  // Over the variables of the root.
  PackedCover cover_of(const bdd::Bdd& f) const {
    const bdd::SupportCover form = bdd::cover_of(f);
    toolkit::Cover result(support_.size(), false);
    for (const toolkit::Cube& cube : form.cover) {
      toolkit::Cube wide(support_.size(), toolkit::Ternary::dash);
      for (std::size_t i = 0; i < form.support.size(); ++i) {
        const auto place = std::ranges::lower_bound(support_, form.support[i]);
        wide.set(static_cast<std::size_t>(place - support_.begin()), cube[i]);
      }
      result.add(std::move(wide));
    }
    return PackedCover(result);
  }

  // Kernels that were known before count as well: of large functions there are too many to look at.
  static constexpr std::size_t most_visits = 20'000;

  const bdd::Bdd f_;
  const PackedCover root_;                    // a cover of it
  const std::vector<std::uint32_t> support_;  // of the root, by position
  const std::size_t limit_;
  std::vector<bdd::Bdd> variables_;  // by position
  std::vector<Divisor> queue_;
  std::set<std::vector<Word>> known_;  // of the root and all in the queue, sorted
  std::size_t visits_ = 0;             // of kernels
  std::vector<DivisionByDivisor> divisions_;
};

}  // namespace

std::vector<DivisionByDivisor> divisions_of(const bdd::Bdd& f, std::size_t limit) {
  const bdd::SupportCover form = bdd::cover_of(f);
  if (form.support.size() < 2) return {};  // a constant or a literal
  return DivisorSearch(f, form, limit).run();
}

}  // namespace vorel::decomposition
