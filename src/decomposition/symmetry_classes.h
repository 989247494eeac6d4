// decomposition/symmetry_classes.h - variables of a function that may change places.
// Here:      which variables leave the four sets of a signal as they are when swapped.
// Not here:  what is saved by trying only one order of them.
#pragma once

#include <cstdint>
#include <vector>

#include "bdd/bdd_cover.h"

namespace vorel::decomposition {

// The variables that the cover depends on, each in one class; any two of a class can be swapped.
// Classes are in the order of their first members, members ascending.
std::vector<std::vector<std::uint32_t>> symmetry_classes(const bdd::BDDCover& cover);

}  // namespace vorel::decomposition
