#include "base/large_blocks.h"

#include <sys/mman.h>

#include <cassert>
#include <cstdlib>

#include "base/memory_overflow.h"

namespace vorel::base {
namespace {

constexpr std::size_t cache_line = 64;

}  // namespace

void* allocate_block(std::size_t size) {
  assert(size > 0);
  const std::size_t unit = size < huge_page ? cache_line : huge_page;
  const std::size_t rounded = (size + unit - 1) / unit * unit;
  void* const block = std::aligned_alloc(unit, rounded);
  if (block == nullptr) memory_overflow();
#ifdef MADV_HUGEPAGE
  // A hint: without it all is just slower.
  if (unit == huge_page) madvise(block, rounded, MADV_HUGEPAGE);
#endif
  return block;
}

void free_block(void* block) { std::free(block); }

}  // namespace vorel::base
