// synthesis/monotonic_cover.h - covers that change at most once while their signal is stable.
// Here:      choosing the values of codes that are free, so that the minimised cover is monotonic.
// Not here:  which codes there are (synthesis/state_sets.h), minimisation (toolkit/minimise.h).
#pragma once

#include <vector>

#include "synthesis/state_sets.h"
#include "toolkit/cover.h"

namespace vorel::synthesis {

// A cover of ON and of nothing of OFF that, where it is false at the start of an arc, is false at
// its end too: so along a path of arcs it falls at most once and never rises, and the gate that
// computes it has no hazard there [KKLVY-1994] [BMM-1998]. No arc leads from OFF to ON, not even
// through others.
toolkit::Cover monotonic_cover(const toolkit::Cover& on, const toolkit::Cover& off,
                               const std::vector<CodeArc>& arcs);

}  // namespace vorel::synthesis
