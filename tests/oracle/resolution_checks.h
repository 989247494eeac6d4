// oracle/resolution_checks.h - whether an STG with new signals does what it did without them.
// Here:      an STG before and after a resolution of its conflicts, compared state by state.
// Not here:  transformations of nets (oracle/book_insertion.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "oracle/state_graph.h"

namespace vorel::oracle {

struct ResolutionClaim {
  std::vector<std::string> new_signals = {};
  std::optional<std::uint8_t> initial_value = 0;  // of the new signals; none: any
  bool resolved = true;                           // no CSC conflict is left
  bool reduced = false;                           // transitions may wait for others, too
};

// The first fault in words, and an empty text when there is none: labels kept, the new signals
// internal; safe, consistent, the new signals as they should be at the start; no trace that was
// none before; each input enabled at once where it was; no output or internal signal disabled by
// another but those that were; no loop of new signals alone; weakly bisimilar with the new signals
// hidden. Of an STG that was reduced, the last is asked in a weaker form: what could still happen
// sometime still can. Conflicts and persistency of a signal that some dummy makes impossible are
// left open: whether it is enabled depends on how a state is reached. Transitions are known by
// their names, dummies included. `before` must be safe and consistent.
std::string resolution_fault(const net::Stg& before, const net::Stg& after,
                             const ResolutionClaim& claim, std::size_t max_states = 20'000);

// The names of the signals that only the STG after has.
std::vector<std::string> new_signals(const net::Stg& before, const net::Stg& after);

// The names of the signals with a CSC conflict. The STG must be safe and consistent.
std::vector<std::string> conflicting_signals(const net::Stg& stg);

}  // namespace vorel::oracle
