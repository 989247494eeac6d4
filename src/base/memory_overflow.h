// base/memory_overflow.h - what happens when memory runs out.
// Every failed allocation ends in memory_overflow(): operator new through the installed handler,
// plain blocks through reallocate_block(), and libraries that throw an exception of their own at
// the place that catches it.
#pragma once

#include <cstddef>

namespace vorel::base {

// Takes the reserve that lets the report be printed, and installs the handler for operator new.
void install_memory_overflow_handler();

// Gives the reserve back at the end of a run.
void release_memory_reserve();

// Reports "memory overflow" once, raises the severity to 5 and ends the process with that code at
// once: no unwinding, no end step.
[[noreturn]] void memory_overflow();

// realloc() that never returns null for a size above 0; a null block is allocated afresh.
void* reallocate_block(void* block, std::size_t size);

}  // namespace vorel::base
