// toolkit/algebra.h - division and kernels of covers as if they were polynomials [BM-1982].
// Here:      quotient and remainder, kernels with their co-kernels; a variable and its complement
//            are unrelated. On covers, and on their packed form for algorithms.
// Not here:  factoring (toolkit/factor.h).
#pragma once

#include <functional>
#include <vector>

#include "toolkit/cover.h"
#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

// dividend = divisor * quotient + remainder, where the quotient is the largest one that has no
// variable of the divisor, and the remainder has the dividend's cubes that the product has not.
template <class AnyCover>
struct Division {
  AnyCover quotient, remainder;
};

// By the empty sum: no quotient.
Division<Cover> divide(const Cover& dividend, const Cover& divisor);
Division<PackedCover> divide(const PackedCover& dividend, const PackedCover& divisor);

// Calls visit(kernel, co-kernel) for each co-kernel, until it returns false. A co-kernel is a cube
// that divides at least two cubes, and is all that divides them; the kernel is the quotient by it.
// Cubes that others contain are first removed. The order is fixed; a kernel comes before those
// found within it.
void for_each_kernel(const Cover& cover,
                     const std::function<bool(const Cover& kernel, const Cube& co_kernel)>& visit);
void for_each_kernel(
    const PackedCover& cover,  // no row contains another
    const std::function<bool(const PackedCover& kernel, ConstRow co_kernel)>& visit);

// The product of the literals that all rows have. There must be rows.
std::vector<Word> common_cube(const PackedCover& cover);

// The rows that have all literals of the cube, without them.
PackedCover divide_by_cube(const PackedCover& cover, ConstRow cube);

}  // namespace vorel::toolkit
