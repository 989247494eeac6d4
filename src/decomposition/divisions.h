// decomposition/divisions.h - by what a function can be divided, and what that leaves.
// Here:      the divisors that kernels of a cover, and of what is left by dividing it, lead to.
// Not here:  what is made of a division (decomposition/alg_decomposer.h), the division of one cover
//            by another (toolkit/algebra.h).
#pragma once

#include <cstddef>
#include <vector>

#include "bdd/bdd.h"

namespace vorel::decomposition {

// f = d * q1 + !d * q0 + r. Each cube of a cover of f comes from a cube of the divisor and one of
// its quotient, the same with the complement of the divisor, or is one of the remainder. All but d
// may be false.
struct DivisionByDivisor {
  bdd::Bdd d, q1, q0, r;
};

// The function is divided as a minimised cover of it is [BM-1982]. By its kernels, their co-kernels
// and its own cubes; then by what these divisions leave, quotients and remainders, and by the
// kernels of all these. Cubes of one literal divide nothing, as they stand for no gate, unless they
// are what the function is the sum or the product of. The divisors are different as covers, and
// that set depends on the cover alone as long as there are fewer than `limit`. None of a constant
// or a literal. In a fixed order.
std::vector<DivisionByDivisor> divisions_of(const bdd::Bdd& f, std::size_t limit);

}  // namespace vorel::decomposition
