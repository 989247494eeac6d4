// oracle/reference_merger.h - the merged process of a prefix, by definition.
// The occurrence depth of a condition is the largest number of conditions of its place on a path
// that ends at it, itself included. Conditions of one place and depth merge; then events of one
// transition with equal presets and postsets merge. An mp-event is a cut-off when all its events
// are. Numbered by the first condition or event of each class.
#pragma once

#include "net/process.h"

namespace vorel::oracle {

template <class N>
net::MergedProcessOf<N> merge(const net::PrefixOf<N>& prefix);

}  // namespace vorel::oracle
