// base/large_blocks.h - blocks of memory for what takes many megabytes.
// Here:      two functions that take blocks and give them back.
// Not here:  how a block is divided (unfolder/room.h, the pool of the XML parser).
//
// Taken in pages of 4 KiB, much of the time of filling memory goes into page faults, for which
// threads wait for each other, and addresses are not found in tables of the processor that keep few
// pages. Blocks of several MiB are therefore asked for in huge pages.
#pragma once

#include <cstddef>

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

}  // namespace vorel::base
