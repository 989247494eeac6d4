// toolkit/complement.h - the complement of a cover.
// Here:      the unate-recursive complement [BHMS-1984], the complement of a unate cover, which is
//            the set of all its primes, and the simplification that the same recursion gives.
// Not here:  tautology (toolkit/tautology.h).
#pragma once

#include "toolkit/cover.h"
#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

// Exact; in cube order. At verbosity 6 both covers are printed on the standard error stream.
Cover complement(const Cover& cover);

// Which products of a complement are wanted.
struct ProductBounds {
  std::size_t max_literals = ~std::size_t{0};
  std::size_t max_products = ~std::size_t{0};
};

// The same for a cover in which no variable occurs both plainly and negated; within bounds, only a
// part of the complement's primes.
Cover unate_complement(const Cover& cover, const ProductBounds& bounds = {});

// Another cover of the same points, often with fewer rows.
PackedCover simplify(const PackedCover& cover);

}  // namespace vorel::toolkit
