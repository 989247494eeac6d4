// resolution/core_splitting.h - whether a new edge tells the two configurations of a core apart.
// Here:      where one occurrence of the edge stands after a configuration.
// Not here:  where edges can be put, the parity of edges within a core.
#pragma once

#include <cstdint>

#include "resolution/edge_occurrence.h"

namespace vorel::resolution {

enum class EdgeStage : std::uint8_t {
  out,        // some cause has not fired
  can_fire,   // all causes have fired, and no follower
  has_fired,  // a follower has fired
};

// In one configuration of a core it can fire, and in the other it cannot: what was one code becomes
// two or not as the edge fires or waits. If it is out of one and has fired in the other, it lies
// within the core and counts for its parity instead.
EdgeStage stage_after(const configuration::EventSet& configuration, const EdgeOccurrence& edge);

}  // namespace vorel::resolution
