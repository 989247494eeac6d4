// toolkit/divisors.h - what a cover can be divided by with some gain.
// Here:      candidates and their normal form.
// Not here:  dividing (toolkit/algebra.h), choosing one (toolkit/factor.h).
#pragma once

#include <vector>

#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

// Kernels other than the cover itself, and what two of them have in common: by it the co-kernels of
// both can be bracketed. All are different and have at least two rows without a common literal. A
// bounded number, in a fixed order. No row of the cover contains another.
std::vector<PackedCover> divisors_of(const PackedCover& cover);

// The rows in ascending order, one behind the other: alike for the same rows in any order.
std::vector<Word> sorted_words(const PackedCover& cover);

}  // namespace vorel::toolkit
