// configuration/merged_validation.h - what else is checked of a solution on a merged process.
// Here:      causal cycles and the order of the occurrences of each place, by following the events.
// Not here:  the replay that prefixes need too (configuration/validation.h).
// As there, a failed check is reported as an error.
#pragma once

#include <span>

#include "net/process.h"

namespace vorel::configuration {

// No event of the sequence is among its own causes in the sequence.
template <net::Process P>
bool check_acyclic(const P& process, std::span<const typename P::Event* const> sequence);

// Each event finds and leaves the occurrences of its places in the order of their depths.
template <net::Process P>
bool check_no_gap(const P& process, std::span<const typename P::Event* const> sequence);

}  // namespace vorel::configuration
