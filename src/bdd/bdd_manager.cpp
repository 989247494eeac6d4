#include "bdd/bdd_manager.h"

#include <cassert>
#include <cstdlib>

#include "base/messages.h"
#include "bdd/cudd_interface.h"

namespace vorel::bdd {
namespace {

// Where the fast growth of the unique table ends, and the most entries of the computed table.
constexpr unsigned most_unique_slots = BddManager::memory_bound / 16 / 5;
constexpr unsigned most_computed_slots = BddManager::memory_bound / 16 / 3;
constexpr unsigned long most_memory = BddManager::memory_bound / 10 * 9;

// Every variable has a table of its own, which starts at this size and grows: so small that even
// the last variable can be named within the bound.
constexpr unsigned slots_of_new_variable = 16;

// No unwinding and no end steps, as when memory runs out anywhere else.
[[noreturn]] void end_process(const char* text) {
  base::print_last_error(text);
  std::_Exit(static_cast<int>(base::severity_memory_overflow));
}

const char* text_of(Cudd_ErrorType error) {
  switch (error) {
    case CUDD_MEMORY_OUT:
    case CUDD_TOO_MANY_NODES:
      return "memory overflow";
    case CUDD_MAX_MEM_EXCEEDED:
      return "exceeded memory limit in BDD manager";
    case CUDD_INVALID_ARG:
      return "an invalid argument provided to a BDD function";
    default:
      return "internal error in BDD manager";
  }
}

// For what CUDD itself has to say about operations that fail. Null if it cannot be opened.
std::FILE* open_void() { return std::fopen("/dev/null", "w"); }

}  // namespace

BddManager& BddManager::instance() {
  static BddManager manager;  // nothing happens to it at exit
  return manager;
}

BddManager::BddManager()
    : cudd_{Cudd_Init(0, 0, slots_of_new_variable, CUDD_CACHE_SLOTS, memory_bound)} {
  std::FILE* const nowhere = open_void();
  if (cudd_ == nullptr || nowhere == nullptr) end_process("failed to create a BDD manager");
  Cudd_SetLooseUpTo(cudd_, most_unique_slots);
  Cudd_SetMaxCacheHard(cudd_, most_computed_slots);
  Cudd_SetMaxMemory(cudd_, most_memory);
  Cudd_SetStdout(cudd_, nowhere);
  Cudd_SetStderr(cudd_, nowhere);
}

std::uint32_t BddManager::variable_count() const {
  return static_cast<std::uint32_t>(Cudd_ReadSize(cudd_));
}

std::uint32_t BddManager::level(std::uint32_t variable) const {
  assert(variable < variable_count());
  return static_cast<std::uint32_t>(Cudd_ReadPerm(cudd_, static_cast<int>(variable)));
}

void BddManager::fail() const { end_process(text_of(Cudd_ReadErrorCode(cudd_))); }

std::size_t BddManager::referenced_node_count() const {
  return static_cast<std::size_t>(Cudd_CheckZeroRef(cudd_));
}

}  // namespace vorel::bdd
