// base/ptr_list.h - a compact growable array of plain, non-owning pointers: the adjacency lists of
// nets and processes.
// Here:      16 bytes and no more for up to one element, amortised growth, iteration, erasing; items
//            in memory of somebody else.
// Not here:  ownership of the elements (see OwnedList, below).
// Duplicates are allowed; the order is the caller's.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "base/memory_overflow.h"

namespace vorel::base {

template <class T>
class PtrList {
 public:
  PtrList() = default;
  PtrList(PtrList&& other) noexcept { swap(other); }
  PtrList& operator=(PtrList&& other) noexcept {
    swap(other);
    return *this;
  }
  PtrList(const PtrList&) = delete;
  PtrList& operator=(const PtrList&) = delete;
  ~PtrList() {
    if (!is_inline() && !is_borrowed()) std::free(store_.many);
  }

  std::uint32_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T** begin() { return is_inline() ? &store_.one : store_.many; }
  T** end() { return begin() + size_; }
  T* const* begin() const { return is_inline() ? &store_.one : store_.many; }
  T* const* end() const { return begin() + size_; }
  T* front() const { return (*this)[0]; }
  T* back() const { return (*this)[size_ - 1]; }
  T* operator[](std::uint32_t position) const {
    assert(position < size_);
    return begin()[position];
  }

  void push_back(T* item) {
    if (size_ >= capacity_) reserve(2 * size_ + 2);
    begin()[size_++] = item;
  }
  // Exact: one allocation, or none, when the final size is known beforehand.
  void reserve(std::uint32_t capacity) {
    if (capacity <= capacity_ || capacity <= size_) return;
    if (is_borrowed()) capacity = std::max(capacity, 2u);
    const std::size_t bytes = std::size_t{capacity} * sizeof(T*);
    if (is_inline() || is_borrowed()) {
      T** const items = static_cast<T**>(reallocate_block(nullptr, bytes));
      std::copy(begin(), end(), items);
      store_.many = items;
    } else {
      store_.many = static_cast<T**>(reallocate_block(store_.many, bytes));
    }
    capacity_ = capacity;
  }
  // Instead of pushing so many items into an empty list: they lie where they are, for as long as
  // the list has not grown. The list may change them.
  void borrow(std::span<T*> items) {
    assert(empty() && is_inline());
    size_ = static_cast<std::uint32_t>(items.size());
    if (size_ == 1) store_.one = items.front();
    if (size_ <= 1) return;
    store_.many = items.data();
    capacity_ = 0;
  }
  void erase(T** first, T** last) {
    assert(begin() <= first && first <= last && last <= end());
    T** out = first;
    for (T** in = last; in != end(); ++in) *out++ = *in;
    size_ = static_cast<std::uint32_t>(out - begin());
  }
  void clear() { size_ = 0; }

  operator std::span<T* const>() const { return {begin(), size_}; }

 private:
  bool is_inline() const { return capacity_ == 1; }
  bool is_borrowed() const { return capacity_ == 0; }
  void swap(PtrList& other) noexcept {
    std::swap(store_, other.store_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

  // Most lists of a process have one element: it needs no block of memory.
  union Store {
    T* one;
    T** many;
  };
  Store store_{nullptr};
  std::uint32_t size_ = 0;
  std::uint32_t capacity_ = 1;  // 1: the element is in the store itself; 0: no memory of its own
};

// The top-level list that owns its elements; the position of an element equals its `index`.
template <class T>
using OwnedList = std::vector<std::unique_ptr<T>>;

inline constexpr std::uint32_t no_index = 0xFFFFFFFFu;  // an element that is in no list (yet)

// Appends a new element whose `index` is its position.
template <class T>
T& append_new(OwnedList<T>& list) {
  list.push_back(std::make_unique<T>());
  T& element = *list.back();
  element.index = static_cast<std::uint32_t>(list.size() - 1);
  return element;
}

// Rewrites each `index` to the position.
template <class T>
void renumber(OwnedList<T>& list) {
  std::uint32_t position = 0;
  for (const auto& element : list) element->index = position++;
}

}  // namespace vorel::base
