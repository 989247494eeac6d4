// driver/application.h - one run of the program from start to exit code.
// Here:      from the command line to the mode; the prompt.
// Not here:  what a mode does (driver/modes.h), start and end steps (base/program.h).
#pragma once

namespace vorel::driver {

// The body of main. Returns the exit code: 0 clean, 1 warnings, 2 errors.
int run_application(int argc, char** argv);

}  // namespace vorel::driver
