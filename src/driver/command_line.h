// driver/command_line.h - from the arguments of the process to the request.
// Here:      parsing and checking.
// Not here:  which options there are (driver/option_table.h), the help (driver/help.h).
#pragma once

#include <optional>

#include "driver/run_request.h"

namespace vorel::driver {

// nullopt when the help was printed or an error was reported.
std::optional<RunRequest> parse_command_line(int argc, char** argv);

}  // namespace vorel::driver
