// driver/help.h - what the program prints about itself: banner, usage, the manual of the options.
// Here:      order and layout.
// Not here:  the rows it reads (driver/option_table.h), the longer texts (driver/help_text.h).
#pragma once

#include "driver/run_request.h"

namespace vorel::driver {

// Prints the brief or the full help on the standard output, with the values of the options and
// the coefficient texts of the request as the defaults.
void print_help(bool brief, const RunRequest& defaults);

}  // namespace vorel::driver
