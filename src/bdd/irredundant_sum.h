// bdd/irredundant_sum.h - a sum of products of a function without listing the paths of its diagram.
// Here:      the recursion of Minato and Morreale [Minato-1992].
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

}  // namespace vorel::bdd
