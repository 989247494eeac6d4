// toolkit/all_primes.h - all primes of a function of few variables.
// Here:      tables with a bit for each cube over the variables.
// Not here:  primes over one cube, whatever the number of variables (toolkit/expand.h).
#pragma once

#include <cstddef>
#include <optional>

#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

// So many variables at most: their tables take 2 MB.
inline constexpr std::size_t most_table_variables = 13;

// The primes that share a point with ON and none with OFF, in an order that depends on nothing but
// the two sets of points. Nothing if there are more than `most`. Takes about n * 3^n / 64 steps for
// n variables, however many points there are.
std::optional<PackedCover> all_primes(const PackedCover& on, const PackedCover& off,
                                      std::size_t most);

}  // namespace vorel::toolkit
