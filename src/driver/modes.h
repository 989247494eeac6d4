// driver/modes.h - the modes: each reads its input and runs its engine on it.
// Here:      the table of mode functions, the run functions behind them, the order of their steps.
// Not here:  the engines, the choice of the reader (formats/process_file.h).
#pragma once

#include <cstdint>

#include "driver/run_request.h"

namespace vorel::driver {

// All outcomes are told through the output and the severity. Each run changes a copy of its own.
using ModeFunction = void (*)(const RunRequest& request);

// Null for a number without a mode.
ModeFunction mode_function(std::int32_t mode);

}  // namespace vorel::driver
