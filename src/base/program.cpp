#include "base/program.h"

#include <fcntl.h>
#include <unistd.h>

#include <cassert>
#include <cstdint>
#include <iostream>

#include "base/memory_overflow.h"
#include "base/messages.h"
#include "base/temporary_files.h"

namespace vorel::base {
namespace {

// A standard stream that the caller closed gets a descriptor that cannot be written: otherwise the
// next file to be opened would take its number, and the output of the stream.
void occupy_standard_descriptors() {
  int descriptor = ::open("/dev/null", O_RDONLY);
  while (0 <= descriptor && descriptor <= STDERR_FILENO) {
    descriptor = ::open("/dev/null", O_RDONLY);
  }
  if (descriptor >= 0) ::close(descriptor);
}

// An answer that did not reach its reader is no answer. After an error the exit code says so
// anyway.
void finish_output() {
  std::cout.flush();
  if (!std::cout && !run_failed()) print_error("cannot write to the standard output");
}

}  // namespace

void start_program() {
  occupy_standard_descriptors();
  std::ios::sync_with_stdio(false);
  install_memory_overflow_handler();
}

int finish_program() {
  finish_output();
  // The end steps may warn, which no longer changes the exit code.
  const std::uint32_t exit_code = raise_severity(0);
  assert(exit_code <= severity_error && "a memory overflow does not come here");
  release_memory_reserve();
  delete_temporary_files();
  return static_cast<int>(exit_code);
}

}  // namespace vorel::base
