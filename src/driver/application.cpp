#include "driver/application.h"

#include <fcntl.h>
#include <unistd.h>

#include <cassert>
#include <cstdint>
#include <iostream>
#include <limits>

#include "base/memory_overflow.h"
#include "base/messages.h"
#include "base/params.h"
#include "base/run_state.h"
#include "base/temporary_files.h"
#include "driver/command_line.h"
#include "driver/modes.h"

namespace vorel {
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

void start() {
  occupy_standard_descriptors();
  std::ios::sync_with_stdio(false);
  install_memory_overflow_handler();
}

void end() {
  release_memory_reserve();
  delete_temporary_files();
}

// With `wait_mode` 1 after errors, with 2 after warnings too, with 3 always.
void wait_for_user(std::int32_t wait_mode) {
  assert(0 <= wait_mode && wait_mode <= 3);
  if (raise_severity(0) + static_cast<std::uint32_t>(wait_mode) < 3) return;
  std::cout << "\n Press `Enter'..." << std::flush;
  std::cin.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
}

void run(const Params& params) {
  run_state().verbosity = params.get("verbosity");
  std::cout << "\nfile: " << run_state().input_file_name;
  if (const ModeFunction function = mode_function(params.get("mode"))) {
    function(params);
  } else {
    print_error("This mode is currently not supported");
  }
  wait_for_user(params.get("wait_mode"));
}

// An answer that did not reach its reader is no answer. After an error the exit code says so
// anyway.
void finish_output() {
  std::cout.flush();
  if (!std::cout && !run_failed()) print_error("cannot write to the standard output");
}

}  // namespace

int run_application(int argc, char** argv) {
  start();
  if (const auto params = parse_command_line(argc, argv)) run(*params);
  finish_output();
  // The end step may warn, which no longer changes the exit code.
  const std::uint32_t exit_code = raise_severity(0);
  assert(exit_code <= severity_error && "a memory overflow does not come here");
  end();
  return static_cast<int>(exit_code);
}

}  // namespace vorel
