// configuration/one_token_parts.h - parts of a net that always have exactly one token.
// Here:      sets of places between which each transition moves the token, or leaves it alone.
// Not here:  other sums of tokens that do not change (configuration/place_invariants.h).
#pragma once

#include <vector>

#include "configuration/token_flow.h"

namespace vorel::configuration {

// Places that may be marked, which make up a state machine [Mur-1989]: a process, say, or the
// values of a variable. The largest come first. There may be exponentially many; more than some are
// not looked for.
std::vector<TokenFlow::Places> one_token_parts(const TokenFlow& flow);

// By place: whether it has a token at the start, or some transition produces one.
std::vector<bool> live_places(const TokenFlow& flow);

}  // namespace vorel::configuration
