// base/sort_unique.h - from a list with repetitions, in any order, to a set.
#pragma once

#include <algorithm>
#include <functional>

namespace vorel::base {

// Sorts the list by what the projection gives (which must be comparable with < and ==) and keeps
// one of the elements that agree in it. Without a projection by the elements themselves; lists of
// pointers are given &Element::index, so that the result does not depend on addresses.
template <class List, class Projection = std::identity>
void sort_unique(List& list, Projection projection = {}) {
  std::ranges::sort(list, {}, projection);
  const auto repeated = std::ranges::unique(list, {}, projection);
  list.erase(repeated.begin(), repeated.end());
}

}  // namespace vorel::base
