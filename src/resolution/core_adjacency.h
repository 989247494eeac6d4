// resolution/core_adjacency.h - which cores can follow which.
// Here:      the arcs, and what is told about them.
// Not here:  how many cores a transformation leaves.
#pragma once

#include <cstdint>
#include <ostream>
#include <span>
#include <vector>

#include "conflicts/core.h"

namespace vorel::resolution {

// The core `second`, which is nested, fits after a configuration of the core `first`: that one and
// the other configuration of `first` are then in conflict too, of unique state coding only.
struct UscArc {
  std::uint32_t first, second;  // positions in the list of cores
  auto operator<=>(const UscArc&) const = default;
};

// Sorted. The two predicates tell conflicts of unique and of complete state coding. Quadratic in
// the cores.
std::vector<UscArc> usc_arcs(const net::StgPrefix& prefix, std::span<const conflicts::Core> cores,
                             const conflicts::KeepCore& is_usc_conflict,
                             const conflicts::KeepCore& is_csc_conflict);

// The numbers, and from verbosity 4 on each core with those that can follow it.
void print_adjacency(std::ostream& stream, std::size_t cores, std::span<const UscArc> arcs);

}  // namespace vorel::resolution
