// base/program.h - the first and the last steps of every program.
// Here:      standard streams, memory overflow, exit code.
// Not here:  command lines, what a program does.
#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace vorel::base {

// To be called first in main(), once.
void start_program();

// Flushes the standard output, where a failure is an error, and runs the end steps. Returns the
// exit code: 0 clean, 1 warnings, 2 errors.
int finish_program();

// Keeps an object until the process has ended: it is never destroyed. To give back a large prefix
// node by node takes some percent of the time that it took to make it; the system takes back
// everything at once.
template <class T>
T& keep_to_the_end(T object) {
  // What holds it must not be destroyed either.
  static auto& kept = *std::make_unique<std::vector<std::unique_ptr<T>>>().release();
  kept.push_back(std::make_unique<T>(std::move(object)));
  return *kept.back();
}

}  // namespace vorel::base
