// unfolder/room.h - memory for many short arrays of one worker, taken from a few large blocks.
// Here:      taking arrays, giving all of them back at once.
// Not here:  when an array is not needed any more.
//
// Workers that ask the general allocator for every array wait for each other and for the system,
// and one thread gives all back in the end. A room belongs to one worker; others may read and write
// what it holds.
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "base/large_blocks.h"

namespace vorel::unfolder {

// T has no destructor to run, and an array of T begins to live when somebody writes to it. Arrays
// are not initialised.
template <class T>
requires std::is_trivially_copyable_v<T>
class Room {
 public:
  // Stays valid until the room is cleared or destroyed. Null if it is of no elements.
  T* take(std::size_t count) {
    if (count == 0) return nullptr;
    if (count > left_) enter_block(count);
    left_ -= count;
    return static_cast<T*>(blocks_[used_ - 1].memory.get()) + left_;
  }

  // Gives back everything, but keeps the blocks.
  void clear() { used_ = left_ = 0; }

 private:
  // The first blocks are small, for the sake of small nets.
  static constexpr std::size_t first_bytes = 1u << 14;
  struct Block {
    base::Block memory;
    std::size_t size = 0;  // in elements
  };

  void enter_block(std::size_t count) {
    while (used_ < blocks_.size() && blocks_[used_].size < count) ++used_;
    if (used_ == blocks_.size()) {
      const std::size_t bytes =
          std::max(count * sizeof(T),
                   std::min(base::huge_page, first_bytes << std::min(used_, std::size_t{10})));
      blocks_.push_back({base::Block(base::allocate_block(bytes)), bytes / sizeof(T)});
    }
    left_ = blocks_[used_++].size;
  }

  std::vector<Block> blocks_;
  std::size_t used_ = 0;  // blocks; arrays come from the last of these
  std::size_t left_ = 0;  // in it, which is filled from its end
};

}  // namespace vorel::unfolder
