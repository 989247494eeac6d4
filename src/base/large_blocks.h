// base/large_blocks.h - blocks of memory for what takes many megabytes.
// Here:      two functions that take blocks and give them back, and who owns a block.
// Not here:  how a block is divided (unfolder/room.h, the pool of the XML parser).
//
// Taken in pages of 4 KiB, much of the time of filling memory goes into page faults, for which
// threads wait for each other, and addresses are not found in tables of the processor that keep few
// pages. Blocks of several MiB are therefore asked for in huge pages.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace vorel::base {

// A block of this size, or a multiple of it, wastes nothing.
inline constexpr std::size_t huge_page = std::size_t{1} << 21;

// Never null: ends in memory_overflow(). Aligned to cache lines; not initialised. A block of a huge
// page or more is rounded up to full ones. Thread-safe.
void* allocate_block(std::size_t size);
void free_block(void* block);

struct FreeBlock {
  void operator()(void* block) const { free_block(block); }
};
using Block = std::unique_ptr<void, FreeBlock>;

// The blocks that the elements of an object lie in. Stands before these, so that they are destroyed
// first; for the same reason an assignment leaves the blocks that there were to the other object.
class BlockList {
 public:
  BlockList() = default;
  BlockList(BlockList&&) = default;
  BlockList& operator=(BlockList&& other) noexcept {
    blocks_.swap(other.blocks_);
    return *this;
  }

  // For so many elements, which are still to be made. Null for none.
  template <class T>
  T* take(std::size_t count) {
    if (count == 0) return nullptr;
    blocks_.emplace_back(allocate_block(count * sizeof(T)));
    return static_cast<T*>(blocks_.back().get());
  }

 private:
  std::vector<Block> blocks_;
};

}  // namespace vorel::base
