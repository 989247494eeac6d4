// base/indexed_by.h - tables indexed by the number of an element, and sets of elements.
// IndexedBy<Event, V>: a flat vector with one V per element of a list, addressed by the element.
// MarkSet<Event>:      a set of elements with clear() in O(1), reusable scratch of an algorithm.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/id.h"

namespace vorel::base {

template <class Element, class Value>
class IndexedBy {
 public:
  IndexedBy() = default;
  explicit IndexedBy(std::size_t size, const Value& value = Value{}) : values_(size, value) {}

  std::size_t size() const { return values_.size(); }
  decltype(auto) operator[](const Element& element) { return at(element.index); }
  decltype(auto) operator[](const Element& element) const { return at(element.index); }
  decltype(auto) operator[](Id<Element> id) { return at(id.value); }
  decltype(auto) operator[](Id<Element> id) const { return at(id.value); }
  decltype(auto) at(std::uint32_t index) {
    assert(index < values_.size());
    return values_[index];
  }
  decltype(auto) at(std::uint32_t index) const {
    assert(index < values_.size());
    return values_[index];
  }
  auto begin() { return values_.begin(); }
  auto end() { return values_.end(); }
  auto begin() const { return values_.begin(); }
  auto end() const { return values_.end(); }
  bool operator==(const IndexedBy&) const = default;

 private:
  std::vector<Value> values_;
};

template <class Element>
class MarkSet {
 public:
  explicit MarkSet(std::size_t element_count) : stamps_(element_count, 0) {}

  bool contains(Id<Element> id) const { return stamps_[check(id)] == now_; }
  bool contains(const Element& e) const { return contains(id_of(e)); }
  // True if the element was not in the set.
  bool insert(Id<Element> id) { return std::exchange(stamps_[check(id)], now_) != now_; }
  bool insert(const Element& e) { return insert(id_of(e)); }
  void erase(Id<Element> id) { stamps_[check(id)] = 0; }
  void erase(const Element& e) { erase(id_of(e)); }
  void clear() { ++now_; }

 private:
  std::size_t check(Id<Element> id) const {
    assert(id.value < stamps_.size());
    return id.value;
  }
  std::vector<std::uint32_t> stamps_;  // the round in which the element was inserted
  std::uint32_t now_ = 1;              // 2^32 rounds are more than any run makes
};

}  // namespace vorel::base
