#include "toolkit/transversals.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace vorel::toolkit {
namespace {

std::size_t size_of(ConstRow positions) {
  std::size_t size = 0;
  for (const Word word : positions) size += static_cast<std::size_t>(std::popcount(word));
  return size;
}

Word bit_of(std::size_t i) { return Word{1} << i % 64; }
// A position's bit within its word.
Word position_bit(std::size_t position) { return Word{1} << position % positions_per_word * 2; }

}  // namespace

// Those of the smallest sets: what they leave only costs time, and so does comparing with more.
void TransversalSearch::remove_supersets() {
  constexpr std::size_t most_compared = 64;

  std::vector<std::uint32_t> first(sets_.width() + 2, 0), sizes(sets_.size()),
      by_size(sets_.size());
  for (std::size_t i = 0; i < sets_.size(); ++i) {
    sizes[i] = static_cast<std::uint32_t>(size_of(sets_[i]));
    ++first[sizes[i] + 1];
  }
  std::partial_sum(first.begin(), first.end(), first.begin());
  for (std::uint32_t i = 0; i < sets_.size(); ++i) by_size[first[sizes[i]]++] = i;
  kept_.truncate(0);
  for (const std::uint32_t i : by_size) {
    const ConstRow set = sets_[i];
    const std::size_t last = std::min(kept_.size(), most_compared);
    std::size_t k = 0;
    while (k < last && !contains(set, std::as_const(kept_)[k])) ++k;
    if (k == last) kept_.add(set);
  }
  std::swap(sets_, kept_);
}

void TransversalSearch::index_sets() {
  set_words_ = (sets_.size() + 63) / 64;
  meets_.assign(sets_.width() * set_words_, 0);
  for (std::size_t i = 0; i < sets_.size(); ++i) {
    for_each_position(sets_[i], [&](std::size_t position) {
      meets_[position * set_words_ + i / 64] |= bit_of(i);
    });
  }
}

void TransversalSearch::choose_branches(const Level& level) {
  std::size_t best = 0, fewest = sets_.width() + 1;
  for (std::size_t w = 0; w < set_words_; ++w) {
    for (Word rest = stack_[level.unmet + w]; rest != 0; rest &= rest - 1) {
      const std::size_t i = w * 64 + static_cast<std::size_t>(std::countr_zero(rest));
      std::size_t count = 0;
      for (std::size_t k = 0; k < sets_.stride(); ++k)
        count +=
            static_cast<std::size_t>(std::popcount(sets_[i][k] & stack_[level.candidates + k]));
      if (count < fewest) {
        fewest = count;
        best = i;
      }
    }
  }
  const std::size_t first = branches_.size();
  gains_.clear();
  for_each_position(sets_[best], [&](std::size_t position) {
    const Word candidates = stack_[level.candidates + position / positions_per_word];
    if ((candidates & position_bit(position)) == 0) return;
    std::uint32_t gain = 0;
    for (std::size_t w = 0; w < set_words_; ++w)
      gain += static_cast<std::uint32_t>(
          std::popcount(stack_[level.unmet + w] & sets_with(position)[w]));
    // They are few: each goes behind those that meet no fewer.
    const auto place = std::ranges::upper_bound(gains_, gain, std::greater{}) - gains_.begin();
    gains_.insert(gains_.begin() + place, gain);
    branches_.insert(branches_.begin() + static_cast<std::ptrdiff_t>(first) + place,
                     static_cast<std::uint32_t>(position));
  });
}

// Goes on with the position chosen, unless another chosen one would no longer be needed.
bool TransversalSearch::try_position(std::size_t position, std::size_t depth, const Level& level) {
  const std::size_t top = stack_.size();
  const Level next{top, top + set_words_, top + set_words_ * (depth + 2)};
  stack_.resize(next.candidates + sets_.stride());
  const ConstRow met = sets_with(position);
  bool all_needed = true;
  for (std::size_t w = 0; w < set_words_; ++w) {
    const Word unmet = stack_[level.unmet + w];
    stack_[next.unmet + w] = unmet & ~met[w];
    stack_[next.critical + depth * set_words_ + w] = unmet & met[w];
  }
  for (std::size_t d = 0; d < depth && all_needed; ++d) {
    Word any = 0;
    for (std::size_t w = d * set_words_; w < (d + 1) * set_words_; ++w) {
      const Word critical = stack_[level.critical + w] & ~met[w - d * set_words_];
      stack_[next.critical + w] = critical;
      any |= critical;
    }
    all_needed = any != 0;
  }
  bool go_on = true;
  if (all_needed) {
    std::copy_n(stack_.begin() + static_cast<std::ptrdiff_t>(level.candidates), sets_.stride(),
                stack_.begin() + static_cast<std::ptrdiff_t>(next.candidates));
    chosen_[position / positions_per_word] |= position_bit(position);
    go_on = search(depth + 1, next);
    chosen_[position / positions_per_word] &= ~position_bit(position);
    stack_[level.candidates + position / positions_per_word] |= position_bit(position);
  }
  stack_.resize(top);
  return go_on;
}

bool TransversalSearch::search(std::size_t depth, const Level& level) {
  const auto unmet = std::span(stack_).subspan(level.unmet, set_words_);
  if (std::ranges::all_of(unmet, [](Word word) { return word == 0; })) return (*visit_)(chosen_);
  if (depth == max_size_) return true;
  const std::size_t first = branches_.size();
  choose_branches(level);
  const std::size_t last = branches_.size();
  for (std::size_t i = first; i < last; ++i) {
    const std::size_t position = branches_[i];
    stack_[level.candidates + position / positions_per_word] &= ~position_bit(position);
  }
  bool go_on = true;
  for (std::size_t i = first; i < last && go_on; ++i)
    go_on = try_position(branches_[i], depth, level);
  branches_.resize(first);
  return go_on;
}

void TransversalSearch::for_each(const Visit& visit, std::size_t max_size) {
  assert(visit && branches_.empty() && "a search within the visit of another");
  remove_supersets();
  index_sets();
  visit_ = &visit;
  max_size_ = max_size;
  stack_.assign(set_words_ + sets_.stride(), low_bits);
  std::fill_n(stack_.begin(), set_words_, 0);
  for (std::size_t i = 0; i < sets_.size(); ++i) stack_[i / 64] |= bit_of(i);
  search(0, {0, set_words_, set_words_});
}

}  // namespace vorel::toolkit
