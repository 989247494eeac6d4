// toolkit/hitting_set.h - a small set of elements that meets each of some sets.
// Here:      a greedy choice in time linear in the sizes of the sets.
// Not here:  the least such set, or one by weights (toolkit/covering.h); all minimal ones
//            (toolkit/transversals.h).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vorel::toolkit {

// The elements of the sets with one element, then, until all sets are met, one that is in the most
// sets not yet met; in this order. Elements are small numbers, each once in a set; no set is empty.
std::vector<std::uint32_t> hitting_set(std::span<const std::vector<std::uint32_t>> sets);

}  // namespace vorel::toolkit
