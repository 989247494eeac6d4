// bdd/irredundant_sum.h - sums of products without listing the paths of a diagram.
// Here:      the recursion of Minato and Morreale [Minato-1992]: for one function, as cubes;
// between
//            two, as a function.
// Not here:  the minimised cover that is made from it (bdd/cover_bdd.h).
#pragma once

#include <cstdint>
#include <span>

#include "bdd/bdd.h"
#include "toolkit/cover.h"

namespace vorel::bdd {

// No cube can be left out, but not each is prime. Position i stands for support[i]; the support is
// that of the function.
toolkit::Cover irredundant_sum(const Bdd& f, std::span<const std::uint32_t> support);

// The function of an irredundant sum that is true where `lower` is, and nowhere that `upper` is
// not. The bounds must leave room: lower implies upper. Asking for known bounds again costs
// nothing, as long as CUDD remembers them.
Bdd function_between(const Bdd& lower, const Bdd& upper);

}  // namespace vorel::bdd
