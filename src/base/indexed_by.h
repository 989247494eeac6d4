// base/indexed_by.h - tables indexed by the number of an element, and sets of elements.
// IndexedBy<Event, V>: a flat vector with one V per element of a list, addressed by the element.
// MarkSet<Event>:      a set of elements with clear() in O(1), reusable scratch of an algorithm.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vorel::base {

template <class Element, class Value>
class IndexedBy {
 public:
  IndexedBy() = default;
  explicit IndexedBy(std::size_t size, const Value& value = Value{}) : values_(size, value) {}

  std::size_t size() const { return values_.size(); }
  decltype(auto) operator[](const Element& element) { return at(element.index); }
  decltype(auto) operator[](const Element& element) const { return at(element.index); }
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

 private:
  std::vector<Value> values_;
};

template <class Element>
class MarkSet {
 public:
  explicit MarkSet(std::size_t element_count) : stamps_(element_count, 0) {}

  bool contains(const Element& e) const { return stamps_[check(e)] == now_; }
  // True if the element was not in the set.
  bool insert(const Element& e) { return std::exchange(stamps_[check(e)], now_) != now_; }
  void erase(const Element& e) { stamps_[check(e)] = 0; }
  void clear() { ++now_; }

 private:
  std::size_t check(const Element& e) const {
    assert(e.index < stamps_.size());
    return e.index;
  }
  std::vector<std::uint32_t> stamps_;  // the round in which the element was inserted
  std::uint32_t now_ = 1;              // 2^32 rounds are more than any run makes
};

}  // namespace vorel::base
