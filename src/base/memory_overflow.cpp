#include "base/memory_overflow.h"

#include <atomic>
#include <cassert>
#include <cstdlib>
#include <new>

#include "base/messages.h"

namespace vorel::base {
namespace {

constexpr std::size_t reserve_size = 8192;
std::atomic<void*> reserve{nullptr};

}  // namespace

void install_memory_overflow_handler() {
  assert(reserve.load() == nullptr && "installed once per process");
  reserve = std::malloc(reserve_size);
  std::set_new_handler(memory_overflow);
}

void release_memory_reserve() { std::free(reserve.exchange(nullptr)); }

void memory_overflow() {
  // Of several threads out of memory at once only the one that gets the reserve reports.
  if (void* const block = reserve.exchange(nullptr)) {
    std::free(block);
    print_last_error("memory overflow");
  }
  std::_Exit(static_cast<int>(raise_severity(severity_memory_overflow)));
}

void* reallocate_block(void* block, std::size_t size) {
  assert(size > 0);
  void* const grown = std::realloc(block, size);
  if (grown == nullptr) memory_overflow();
  return grown;
}

}  // namespace vorel::base
