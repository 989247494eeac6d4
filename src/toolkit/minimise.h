// toolkit/minimise.h - two-level minimisation of incompletely specified functions.
// Here:      from an ON-set and an OFF-set to a prime and irredundant cover [BHMS-1984].
// Not here:  the steps (toolkit/expand.h, toolkit/irredundant.h, toolkit/reduce.h).
#pragma once

#include <cstdint>

#include "toolkit/cover.h"
#include "toolkit/covering.h"

namespace vorel::toolkit {

// Without the four passes that can be switched on, the result takes one expansion and one choice:
// cheap, and not always the smallest.
struct MinimiseParams {
  bool simplify = false;     // first make the ON-set a smaller cover of the same points
  bool setup = false;        // first split the ON-set's cubes at the last position
  bool repeat = false;       // reduce the cubes and expand them anew while that pays
  bool make_sparse = false;  // last, look for cubes with fewer literals one by one
  // Primes to choose from: over each cube at most so many, fewer (but least_primes_per_cube) when
  // there are so many cubes that max_primes is exceeded. All that there are, if they are no more
  // than max_primes and than max_primes_per_cube for each cube, and the variables are few
  // (toolkit/all_primes.h).
  std::uint32_t max_primes_per_cube = 200;
  std::uint32_t least_primes_per_cube = 24;
  std::uint32_t max_primes = 10'000;
  CoveringParams covering = {};
};

// ON and OFF share no point; what is in neither is free. The empty sum if ON is empty, else one
// cube of dashes if OFF is; else in cube order. At verbosity 6 all three covers are printed on the
// standard error stream.
Cover minimise(const Cover& on, const Cover& off, const MinimiseParams& params = {});

}  // namespace vorel::toolkit
