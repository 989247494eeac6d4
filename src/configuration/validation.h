// configuration/validation.h - solutions are replayed before they are believed.
// Here:      checks by the token game on the process; they share nothing with the encoding.
// Not here:  what only merged processes need (configuration/merged_validation.h).
// A failed check is reported as an error: it points to a fault of the encoding or to a damaged
// input, not to a property of the net.
#pragma once

#include <span>

#include "net/process.h"

namespace vorel::configuration {

// Each event finds its preset marked, and no condition is marked twice, not even one after another.
template <net::Process P>
bool check_safe_run(const P& process, std::span<const typename P::Event* const> sequence);

// No event, cut-offs included, is enabled by the final cut of the sequence, and in a merged process
// no transition by its marking.
template <net::Process P>
bool check_deadlock(const P& process, std::span<const typename P::Event* const> sequence);

}  // namespace vorel::configuration
