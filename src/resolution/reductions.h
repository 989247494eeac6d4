// resolution/reductions.h - the reductions of concurrency that a step chooses from.
// Here:      for each transition that may wait, the sets of others that it can wait for.
// Not here:  what makes one valid (resolution/reduction_check.h), what it costs.
#pragma once

#include <vector>

#include "net/process.h"
#include "resolution/transformation.h"
#include "sat/cnf_formula.h"

namespace vorel::resolution {

// Valid reductions (resolution/reduction_check.h) that make their target wait at least once. The
// sources are concurrent with it and not with each other. In the order of the net's transitions: by
// target, then sources, those without a token first.
//
// Candidates are models of linear conditions on the sources: each cut-off agrees with its
// correspondents, and what earlier candidates ran into. Those with few sources come first, and for
// each target no more are tried than `max_candidates`, nor more kept than `max_reductions`: where
// each of many branches has several transitions to wait for, their combinations are left out.
//
// All correspondents must be known. Told from verbosity 5 on. Empty after a reported error.
struct ReductionLimits {
  std::uint32_t max_candidates = 1000, max_reductions = 100;  // for each target
};
std::vector<Reduction> reductions(const net::StgPrefix& prefix, const sat::CnfParams& params,
                                  const ReductionLimits& limits = {});

}  // namespace vorel::resolution
