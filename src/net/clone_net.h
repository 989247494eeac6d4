// net/clone_net.h - copies of nets and prefixes: a process never shares its net with another.
#pragma once

#include "net/process.h"

namespace vorel::net {

// The same numbers, names, marking and labels; the arcs in the same order.
template <class N>
N clone_net(const N& net);

// The same of a prefix. Conditions that cut-offs left out of the list are in that of the copy, at
// its end.
StgPrefix clone_prefix(const StgPrefix& prefix);

}  // namespace vorel::net
