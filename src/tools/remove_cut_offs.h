// tools/remove_cut_offs.h - a prefix without its cut-offs.
#pragma once

#include "net/process.h"

namespace vorel::tools {

// Removes the cut-offs with the conditions that they produce; the rest keeps its order.
template <class N>
void remove_cut_offs(net::PrefixOf<N>& prefix);

}  // namespace vorel::tools
