// tools/gates_command.h - the program vorel-gates, which writes simulation models of libraries.
// Here:      its command line, its files.
// Not here:  the models (decomposition/gate_models.h).
#pragma once

namespace vorel::tools {

// Gives the exit code.
int run_gates_command(int argc, char** argv);

}  // namespace vorel::tools
