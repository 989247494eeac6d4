// base/default_params.h - the options as they are when nobody asks for anything.
// Here:      every key that an engine may read, and its default.
// Not here:  what sets them (driver/option_table.h).
#pragma once

#include "base/params.h"

namespace vorel::base {

// A store with every key at its default. `solver` is -1 there, which is no solver yet: the driver
// chooses one by the mode.
Params default_params();

}  // namespace vorel::base
