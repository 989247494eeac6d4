// resolution/reduction_cost.h - what reductions of concurrency cost.
// Here:      the numbers of each, read off the prefix as it was before.
// Not here:  what the numbers weigh (resolution/transformation_cost.h), which cores are left
//            (resolution/core_survival.h), which reductions are valid (resolution/reductions.h).
#pragma once

#include <span>
#include <vector>

#include "resolution/core_conditions.h"
#include "resolution/transformation_cost.h"

namespace vorel::resolution {

// The costs of those that remove some core, in the order given. Numbers with weight 0 are 0.
//   delay: how much later the target comes at most, if an event of it waits for a source that is
//          deeper than what it waits for anyway;
//   logic: as of the prefix, but that the signal of the target has those of the sources as
//          triggers, too; a dummy target passes them on to the signals that it leads to through
//          dummies, and a dummy source stands for the signals that lead to it so;
//   non_locked: of all signals, as after the reduction.
std::vector<ResolutionCost> evaluate_reductions(const net::StgPrefix& prefix,
                                                const CoreStore& store,
                                                const CostCoefficients& coefficients,
                                                std::span<const Reduction> reductions);

}  // namespace vorel::resolution
