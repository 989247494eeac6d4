// oracle/clone.h - a copy of a net, for tests that need the net and a process that owns it.
#pragma once

#include "net/net.h"

namespace vorel::oracle {

// The same numbers, names, arcs in the same order, marking, signals and labels.
template <class N>
N clone(const N& net);

}  // namespace vorel::oracle
