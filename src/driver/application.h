// driver/application.h - one run of the program from start to exit code.
// Here:      start and end steps, the prompt, the exit code.
// Not here:  what a mode does (driver/modes.h).
#pragma once

namespace vorel {

// The body of main. Returns the exit code: 0 clean, 1 warnings, 2 errors.
int run_application(int argc, char** argv);

}  // namespace vorel
