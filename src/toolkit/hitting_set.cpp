#include "toolkit/hitting_set.h"

#include <algorithm>
#include <cassert>
#include <iostream>

#include "base/messages.h"
#include "base/run_state.h"

namespace vorel::toolkit {
namespace {

using Numbers = std::vector<std::uint32_t>;

constexpr int verbosity_of_statistics = 5;

class GreedyHitting {
 public:
  explicit GreedyHitting(std::span<const Numbers> sets) : sets_{sets}, is_met_(sets.size(), false) {
    std::size_t elements = 0;
    for (const Numbers& set : sets_) {
      assert(!set.empty() && "nothing meets an empty set");
      elements = std::max<std::size_t>(elements, std::ranges::max(set) + 1u);
    }
    sets_with_.resize(elements);
    for (std::uint32_t s = 0; s < sets_.size(); ++s) {
      for (const std::uint32_t element : sets_[s]) sets_with_[element].push_back(s);
    }
    unmet_with_.resize(elements);
    for (std::size_t e = 0; e < elements; ++e)
      unmet_with_[e] = static_cast<std::uint32_t>(sets_with_[e].size());
  }

  Numbers run() && {
    for (std::size_t s = 0; s < sets_.size(); ++s) {
      if (sets_[s].size() == 1 && !is_met_[s]) take(sets_[s].front());
    }
    for (std::uint32_t e = 0; e < unmet_with_.size(); ++e) put_into_bucket(e);
    take_from_buckets();
    return std::move(chosen_);
  }

 private:
  void take(std::uint32_t element) {
    chosen_.push_back(element);
    for (const std::uint32_t s : sets_with_[element]) {
      if (is_met_[s]) continue;
      is_met_[s] = true;
      for (const std::uint32_t other : sets_[s]) --unmet_with_[other];
    }
  }

  void put_into_bucket(std::uint32_t element) {
    const std::uint32_t count = unmet_with_[element];
    if (count == 0) return;
    if (buckets_.size() <= count) buckets_.resize(count + 1);
    buckets_[count].push_back(element);
  }

  // Counts only fall, so an element is moved to its bucket when it comes up in a higher one.
  void take_from_buckets() {
    while (!buckets_.empty()) {
      if (buckets_.back().empty()) {
        buckets_.pop_back();
        continue;
      }
      const std::uint32_t element = buckets_.back().back();
      buckets_.back().pop_back();
      if (unmet_with_[element] + 1 == buckets_.size())
        take(element);
      else
        put_into_bucket(element);
    }
  }

  const std::span<const Numbers> sets_;
  std::vector<bool> is_met_;
  std::vector<Numbers> sets_with_;  // by element
  Numbers unmet_with_;              // by element: how many sets it would meet
  std::vector<Numbers> buckets_;    // elements by that count, or a higher one
  Numbers chosen_;
};

}  // namespace

Numbers hitting_set(std::span<const Numbers> sets) {
  const bool is_verbose = base::verbosity() >= verbosity_of_statistics;
  if (is_verbose) {
    const auto larger = std::ranges::count_if(sets, [](const auto& set) { return set.size() > 1; });
    base::print_formatted(std::cerr, "\n Computing Hitting Set of %u non-singleton sets",
                          static_cast<std::uint32_t>(larger));
  }
  Numbers chosen = GreedyHitting(sets).run();
  if (is_verbose) {
    base::print_formatted(std::cerr, "\n The cardinality of the computed Hitting Set is %u",
                          static_cast<std::uint32_t>(chosen.size()));
  }
  return chosen;
}

}  // namespace vorel::toolkit
