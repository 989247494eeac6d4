// resolution/input_like.h - transitions that must not be made to wait.
#pragma once

#include "base/indexed_by.h"
#include "net/net.h"

namespace vorel::resolution {

// Those of input signals, and the dummies from which arcs lead to one through dummies alone: who
// delays such a dummy delays the environment.
base::IndexedBy<net::StgTransition, bool> input_like_transitions(const net::Stg& stg);

}  // namespace vorel::resolution
