// base/program.h - the first and the last steps of every program.
// Here:      standard streams, memory overflow, exit code.
// Not here:  command lines, what a program does.
#pragma once

namespace vorel::base {

// To be called first in main(), once.
void start_program();

// Flushes the standard output, where a failure is an error, and runs the end steps. Returns the
// exit code: 0 clean, 1 warnings, 2 errors.
int finish_program();

}  // namespace vorel::base
