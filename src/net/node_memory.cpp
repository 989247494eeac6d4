#include "net/node_memory.h"

#include <sys/mman.h>

#include <cassert>
#include <cstdlib>

#include "base/memory_overflow.h"

namespace vorel::net {
namespace {

constexpr std::size_t huge_page = std::size_t{1} << 21;

}  // namespace

void* allocate_node_block(std::size_t size) {
  assert(size > 0);
  if (size < huge_page) return base::reallocate_block(nullptr, size);
  const std::size_t rounded = (size + huge_page - 1) / huge_page * huge_page;
  void* const block = std::aligned_alloc(huge_page, rounded);
  if (block == nullptr) base::memory_overflow();
#ifdef MADV_HUGEPAGE
  madvise(block, rounded, MADV_HUGEPAGE);  // a hint: without it all is just slower
#endif
  return block;
}

void free_node_block(void* block) { std::free(block); }

}  // namespace vorel::net
