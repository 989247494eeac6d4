// configuration/sorted_links.h - whether an element is linked to another one, by binary search.
// Here:      links in the order of the numbers, also where a file has them in another order.
// Not here:  the links themselves (net/process.h).
#pragma once

#include <algorithm>
#include <iterator>
#include <span>
#include <vector>

#include "base/indexed_by.h"
#include "base/ptr_list.h"

namespace vorel::configuration {

// `links` is one of the lists of an element. Only those that are out of order are copied. Must not
// outlive the elements.
template <class Element, class Linked>
class SortedLinks {
 public:
  SortedLinks(const base::OwnedList<Element>& elements, base::PtrList<Linked> Element::*links)
      : links_{links}, copy_(elements.size(), base::no_index) {
    for (const auto& element : elements) {
      const base::PtrList<Linked>& list = (*element).*links;
      if (std::ranges::is_sorted(list, {}, index_of)) continue;
      copy_[*element] = static_cast<std::uint32_t>(numbers_.size());
      std::ranges::transform(list, std::back_inserter(numbers_), index_of);
      std::sort(numbers_.end() - static_cast<std::ptrdiff_t>(list.size()), numbers_.end());
    }
  }

  bool contains(const Element& element, std::uint32_t index) const {
    const base::PtrList<Linked>& list = element.*links_;
    const std::uint32_t copy = copy_[element];
    if (copy == base::no_index) return std::ranges::binary_search(list, index, {}, index_of);
    return std::ranges::binary_search(std::span(numbers_).subspan(copy, list.size()), index);
  }

 private:
  static constexpr auto index_of = [](const Linked* linked) { return linked->index; };

  base::PtrList<Linked> Element::*const links_;
  base::IndexedBy<Element, std::uint32_t> copy_;  // where the copy begins, or no_index
  std::vector<std::uint32_t> numbers_;
};

}  // namespace vorel::configuration
