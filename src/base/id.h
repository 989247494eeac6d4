// base/id.h - the number of an element as a type of its own.
// Id<Event> is the position of an event in the list that owns it: a table or an argument that
// wants the number of an event does not take that of a signal.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <iterator>

#include "base/ptr_list.h"

namespace vorel::base {

template <class Element>
struct Id {
  std::uint32_t value = no_index;

  constexpr auto operator<=>(const Id&) const = default;
};

template <class Element>
Id<Element> id_of(const Element& element) {
  return {element.index};
}

template <class Element>
Element& element(const OwnedList<Element>& list, Id<Element> id) {
  return *list[id.value];
}

// The numbers from one bound up to another, the latter left out.
template <class Element>
class IdRange {
 public:
  class Iterator {
   public:
    using value_type = Id<Element>;
    using difference_type = std::ptrdiff_t;

    Iterator() = default;
    explicit Iterator(std::uint32_t value) : id_{value} {}
    Id<Element> operator*() const { return id_; }
    Iterator& operator++() {
      ++id_.value;
      return *this;
    }
    Iterator operator++(int) {
      const Iterator before = *this;
      ++id_.value;
      return before;
    }
    bool operator==(const Iterator&) const = default;

   private:
    Id<Element> id_{0};
  };

  IdRange(std::uint32_t first, std::uint32_t last) : first_{first}, last_{last} {}

  Iterator begin() const { return Iterator(first_); }
  Iterator end() const { return Iterator(last_); }
  std::uint32_t size() const { return last_ - first_; }
  bool contains(Id<Element> id) const { return first_ <= id.value && id.value < last_; }

 private:
  std::uint32_t first_, last_;
};

}  // namespace vorel::base

template <class Element>
struct std::hash<vorel::base::Id<Element>> {
  std::size_t operator()(vorel::base::Id<Element> id) const { return id.value; }
};
