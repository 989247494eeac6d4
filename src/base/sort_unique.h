// base/sort_unique.h - sorted lists in which everything stands once.
#pragma once

#include <algorithm>
#include <functional>

namespace vorel::base {

// Sorts the list by the projection and removes what repeats.
template <class List, class Projection = std::identity>
void sort_unique(List& list, Projection projection = {}) {
  std::ranges::sort(list, {}, projection);
  const auto repeated = std::ranges::unique(list, {}, projection);
  list.erase(repeated.begin(), repeated.end());
}

}  // namespace vorel::base
