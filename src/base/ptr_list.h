// base/ptr_list.h - a compact growable array of plain, non-owning pointers: the adjacency lists of
// nets and processes.
// Here:      16 bytes when empty, amortised growth, iteration, erasing.
// Not here:  ownership of the elements (see OwnedList, below).
// Duplicates are allowed; the order is the caller's.
#pragma once

#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "base/memory_overflow.h"

namespace vorel {

template <class T>
class PtrList {
 public:
  PtrList() = default;
  PtrList(PtrList&& other) noexcept
      : items_{std::exchange(other.items_, nullptr)},
        size_{std::exchange(other.size_, 0)},
        capacity_{std::exchange(other.capacity_, 0)} {}
  PtrList& operator=(PtrList&& other) noexcept {
    std::swap(items_, other.items_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    return *this;
  }
  PtrList(const PtrList&) = delete;
  PtrList& operator=(const PtrList&) = delete;
  ~PtrList() { std::free(items_); }

  std::uint32_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T** begin() { return items_; }
  T** end() { return items_ + size_; }
  T* const* begin() const { return items_; }
  T* const* end() const { return items_ + size_; }
  T* front() const { return (*this)[0]; }
  T* back() const { return (*this)[size_ - 1]; }
  T* operator[](std::uint32_t position) const {
    assert(position < size_);
    return items_[position];
  }

  void push_back(T* item) {
    if (size_ == capacity_) reserve(2 * capacity_ + 4);
    items_[size_++] = item;
  }
  // Exact: one allocation when the final size is known beforehand.
  void reserve(std::uint32_t capacity) {
    if (capacity <= capacity_) return;
    items_ = static_cast<T**>(reallocate_block(items_, std::size_t{capacity} * sizeof(T*)));
    capacity_ = capacity;
  }
  void erase(T** first, T** last) {
    assert(begin() <= first && first <= last && last <= end());
    T** out = first;
    for (T** in = last; in != end(); ++in) *out++ = *in;
    size_ = static_cast<std::uint32_t>(out - items_);
  }
  void clear() { size_ = 0; }

  operator std::span<T* const>() const { return {items_, size_}; }

 private:
  T** items_ = nullptr;
  std::uint32_t size_ = 0;
  std::uint32_t capacity_ = 0;
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

}  // namespace vorel
