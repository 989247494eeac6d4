// driver/command_line.h - from the arguments of the process to the options of the run.
// Here:      parsing and checking.
// Not here:  which options there are (driver/option_table.h), the help (driver/help.h).
#pragma once

#include <memory>

#include "base/params.h"

namespace vorel::driver {

// Null when the help was printed or an error was reported. Writes the file names, the data of -d
// and the coefficient texts to the run state.
std::unique_ptr<base::Params> parse_command_line(int argc, char** argv);

}  // namespace vorel::driver
