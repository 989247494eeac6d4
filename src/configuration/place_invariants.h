// configuration/place_invariants.h - weighted sums of tokens that no transition changes.
// Here:      a basis of all of them.
// Not here:  what the transitions do (configuration/token_flow.h), clauses
//            (configuration/marking_bounds.h).
#pragma once

#include <cstdint>
#include <vector>

#include "configuration/token_flow.h"

namespace vorel::configuration {

// After every configuration the weights of the marked places add up to the total [Mur-1989].
struct PlaceInvariant {
  struct Term {
    std::uint32_t place;
    std::int64_t weight;  // not 0
  };
  std::vector<Term> terms;  // by place
  std::int64_t total = 0;
};

// Gaussian elimination on rows of integers. None where that would take more steps than allowed
// (weights read) or lead to large numbers: invariants only help.
std::vector<PlaceInvariant> place_invariants(const TokenFlow& flow, std::uint64_t most_steps);

}  // namespace vorel::configuration
