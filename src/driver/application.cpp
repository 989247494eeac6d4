#include "driver/application.h"

#include <cassert>
#include <cstdint>
#include <iostream>
#include <limits>

#include "base/messages.h"
#include "base/program.h"
#include "base/run_state.h"
#include "driver/command_line.h"
#include "driver/modes.h"

namespace vorel::driver {
namespace {

// With `wait_mode` 1 after errors, with 2 after warnings too, with 3 always.
void wait_for_user(std::int32_t wait_mode) {
  assert(0 <= wait_mode && wait_mode <= 3);
  if (base::raise_severity(0) + static_cast<std::uint32_t>(wait_mode) < 3) return;
  std::cout << "\n Press `Enter'..." << std::flush;
  std::cin.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
}

void run(const RunRequest& request) {
  const base::Params& params = request.params;
  base::run_state().verbosity = params.get("verbosity");
  std::cout << "\nfile: " << request.input;
  if (const ModeFunction function = mode_function(params.get("mode"))) {
    function(request);
  } else {
    base::print_error("This mode is currently not supported");
  }
  wait_for_user(params.get("wait_mode"));
}

}  // namespace

int run_application(int argc, char** argv) {
  base::start_program();
  if (const auto request = parse_command_line(argc, argv)) run(*request);
  return base::finish_program();
}

}  // namespace vorel::driver
