// net/clone_net.h - a copy of a net, for a second process of it: nets are never shared.
#pragma once

#include "net/net.h"

namespace vorel::net {

// The same numbers, names, marking and labels; the arcs in the same order.
template <class N>
N clone_net(const N& net);

}  // namespace vorel::net
