// driver/modes.h - the modes: each reads its input and runs its engine on it.
// Here:      the table of mode functions, the run functions behind them, the order of their steps.
// Not here:  the engines, the choice of the reader (formats/process_file.h).
#pragma once

#include <cstdint>

#include "base/params.h"

namespace vorel::driver {

// Takes its own copy of the options; all outcomes are told through the output and the severity.
using ModeFunction = void (*)(base::Params params);

// Null for a number without a mode.
ModeFunction mode_function(std::int32_t mode);

}  // namespace vorel::driver
