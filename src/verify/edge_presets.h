// verify/edge_presets.h - where an STG lets a signal change, perhaps after silent transitions.
// Here:      the least sets of places from which an edge of a signal can come.
// Not here:  the same of a marking at hand, by firing (verify/circuit_game.h).
//
// Silent transitions are dummies and those of hidden signals. Tokens that are there besides do no
// harm, so that a marking lets the signal change exactly if it contains one of the sets; they are
// found by firing silent transitions backwards from the presets of the edges.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "net/net.h"

namespace vorel::verify {

using PlaceSet = std::vector<std::uint32_t>;  // numbers of places, ascending
using IsSilent = std::function<bool(const net::Signal&)>;

// By number of the signal; those of silent signals are empty.
using EdgePresets = std::vector<std::vector<PlaceSet>>;

// Nothing when a signal has more sets than allowed: when many silent transitions side by side come
// before one edge.
std::optional<EdgePresets> edge_presets(const net::Stg& stg, const IsSilent& is_silent,
                                        std::size_t max_sets = 4096);

}  // namespace vorel::verify
