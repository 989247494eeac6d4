// resolution/input_like.h - the transitions that must not wait for a new signal.
// Here:      inputs, and dummies behind which an input stands; transitions that never fire.
// Not here:  which insertions follow from that (resolution/insertions.h).
#pragma once

#include <vector>

#include "net/instances.h"

namespace vorel::resolution {

// The transition and, of a dummy, all that it leads to through dummies. Each once, itself first.
std::vector<const net::StgTransition*> closure_through_dummies(
    const net::StgTransition& transition);

// The environment fires it, or a dummy that leads to such a one: made to wait, an input would wait.
bool is_input_like(const net::StgTransition& transition);

// Without an event in the prefix.
bool is_dead(const net::Instances<net::StgPrefix>& instances, const net::StgTransition& transition);

}  // namespace vorel::resolution
