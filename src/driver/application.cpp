#include "driver/application.h"

#include <cassert>
#include <cstdint>
#include <iostream>
#include <limits>
#include <string>

#include "base/messages.h"
#include "base/program.h"
#include "base/run_state.h"
#include "driver/command_line.h"
#include "driver/modes.h"
#include "driver/option_table.h"
#include "formats/overwriting.h"

namespace vorel::driver {
namespace {

// With `wait_mode` 1 after errors, with 2 after warnings too, with 3 always.
void wait_for_user(std::int32_t wait_mode) {
  assert(0 <= wait_mode && wait_mode <= 3);
  if (base::raise_severity(0) + static_cast<std::uint32_t>(wait_mode) < 3) return;
  std::cout << "\n Press `Enter'..." << std::flush;
  std::cin.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
}

void run_mode(const RunRequest& request) {
  if (const ModeFunction function = mode_function(request.params.get("mode"))) {
    function(request);
  } else {
    base::print_error("This mode is currently not supported");
  }
}

// The file that the argument of -d names; empty if it names none.
std::string data_file(const RunRequest& request) {
  if (request.params.get("mode") == static_cast<int>(Mode::decomposition)) return request.data;
  return request.data.starts_with('@') ? request.data.substr(1) : "";
}

// What the run reads stays as it is, and so does what another run may read.
bool output_spares_inputs(const RunRequest& request) {
  if (request.output.empty() || request.output == "cerr") return true;  // no file
  return formats::spares_input(request.output, request.input, "is the input") &&
         formats::spares_input(request.output, data_file(request), "is given with -d") &&
         formats::spares_nets(request.output);
}

void run(const RunRequest& request) {
  base::run_state().verbosity = request.params.get("verbosity");
  std::cout << "\nfile: " << request.input;
  if (output_spares_inputs(request)) run_mode(request);
  wait_for_user(request.params.get("wait_mode"));
}

}  // namespace

int run_application(int argc, char** argv) {
  base::start_program();
  if (const auto request = parse_command_line(argc, argv)) run(*request);
  return base::finish_program();
}

}  // namespace vorel::driver
