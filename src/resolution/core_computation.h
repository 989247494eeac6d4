// resolution/core_computation.h - the cores that a step of the resolution works on.
// Here:      those known before, and new ones by checks of complete and of unique state coding.
// Not here:  carrying cores over an insertion (resolution/core_update.h), the checks themselves
//            (conflicts/csc_check.h, conflicts/usc_check.h).
#pragma once

#include <vector>

#include "configuration/search_options.h"
#include "conflicts/pair_search.h"

namespace vorel::resolution {

// Adds to the cores, and takes out what is none: afterwards they are conflicts of unique state
// coding, among them at least one of complete state coding, or there are none because the coding is
// complete. About 100 new ones of each kind are looked for, so that later steps find more. The
// search's own options are set here. False after a reported error; the cores are then of no use.
bool compute_cores(const net::StgPrefix& prefix, configuration::SearchOptions options,
                   conflicts::Notes notes, std::vector<conflicts::Core>& cores);

}  // namespace vorel::resolution
