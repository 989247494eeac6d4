// toolkit/irredundant.h - of given primes, few that still contain the ON-set.
// Here:      the covering problem between parts of the ON-set and primes, found by splitting cubes
//            until the primes that meet a part either contain it or are unate there [Rudell-1989].
// Not here:  solving it (toolkit/covering.h).
#pragma once

#include "toolkit/covering.h"
#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

// The rows of `primes`, which contain `on` together, that stay; none of them can be left out. They
// are few, and among equally many have few literals.
PackedCover irredundant(const PackedCover& primes, const PackedCover& on,
                        const CoveringParams& params = {});

}  // namespace vorel::toolkit
