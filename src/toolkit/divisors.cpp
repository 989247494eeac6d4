#include "toolkit/divisors.h"

#include <algorithm>
#include <numeric>
#include <set>

#include "toolkit/algebra.h"

namespace vorel::toolkit {
namespace {

using Words = std::vector<Word>;

class Divisors {
 public:
  explicit Divisors(const PackedCover& cover) : cover_{cover} {}
  std::vector<PackedCover> run();

 private:
  static constexpr std::size_t most_kernels = 100, most_intersected = 16;

  void add(const PackedCover& divisor);
  void add_intersection(std::size_t a, std::size_t b);

  const PackedCover& cover_;
  std::vector<PackedCover> found_;
  std::vector<Words> words_;  // of the found ones, sorted
  std::set<Words> known_;
};

void Divisors::add(const PackedCover& divisor) {
  Words words = sorted_words(divisor);
  if (!known_.insert(words).second) return;
  found_.push_back(divisor);
  words_.push_back(std::move(words));
}

void Divisors::add_intersection(std::size_t a, std::size_t b) {
  PackedCover common(cover_.width());
  const std::size_t stride = cover_.stride();
  for (std::size_t i = 0, j = 0; i < words_[a].size() && j < words_[b].size();) {
    const ConstRow left(words_[a].data() + i, stride), right(words_[b].data() + j, stride);
    const auto order = std::lexicographical_compare_three_way(left.begin(), left.end(),
                                                              right.begin(), right.end());
    if (order == 0) common.add(left);
    if (order <= 0) i += stride;
    if (order >= 0) j += stride;
  }
  if (common.size() > 1) add(divide_by_cube(common, common_cube(common)));
}

std::vector<PackedCover> Divisors::run() {
  std::size_t seen = 0;
  for_each_kernel(cover_, [&](const PackedCover& kernel, ConstRow) {
    if (kernel.size() < cover_.size()) add(kernel);
    return found_.size() < most_kernels && ++seen < 4 * most_kernels;  // many may be alike
  });
  const std::size_t kernels = std::min(found_.size(), most_intersected);
  for (std::size_t i = 0; i < kernels; ++i)
    for (std::size_t j = i + 1; j < kernels; ++j) add_intersection(i, j);
  return std::move(found_);
}

}  // namespace

Words sorted_words(const PackedCover& cover) {
  std::vector<std::size_t> order(cover.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, [&](std::size_t a, std::size_t b) {
    return std::ranges::lexicographical_compare(cover[a], cover[b]);
  });
  Words words;
  words.reserve(cover.size() * cover.stride());
  for (const std::size_t i : order) words.insert(words.end(), cover[i].begin(), cover[i].end());
  return words;
}

std::vector<PackedCover> divisors_of(const PackedCover& cover) { return Divisors(cover).run(); }

}  // namespace vorel::toolkit
