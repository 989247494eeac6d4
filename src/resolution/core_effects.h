// resolution/core_effects.h - what candidates do to a conflict core.
// Here:      which of them tell its two sides apart, which leave it a conflict.
// Not here:  the clauses that follow (resolution/core_conditions.h).
//
// An occurrence that can fire after one side of a core and not after the other breaks it: with and
// without that edge, the side has two codes, one of which is that of the other side, but the new
// signal is excited on one side only. Without such an occurrence, the two sides have different
// values of the new signal exactly if an odd number of its edges lie between them.
#pragma once

#include <span>
#include <vector>

#include "conflicts/core.h"
#include "resolution/candidates.h"

namespace vorel::resolution {

struct CoreEffect {
  std::vector<CandidateId> breakers;  // each breaks the core; ascending
  std::vector<CandidateId> togglers;  // others, with an odd number of edges in the core; ascending
};

enum class CoreOutcome : std::uint8_t {
  kept,      // the two sides have one code still
  resolved,  // their codes differ
  broken,    // they are in conflict, whatever they were: the new signal tells them apart too late
};

class CoreEffects {
 public:
  explicit CoreEffects(const Candidates& candidates);

  CoreEffect of(const conflicts::Core& core) const;

 private:
  using EventId = configuration::StgEventId;

  const Candidates& candidates_;
  // The occurrences that have the event as a cause or follower.
  base::IndexedBy<net::StgPrefix::Event, std::vector<OccurrenceId>> next_to_;
};

// When the edges chosen are inserted together.
CoreOutcome outcome(const CoreEffect& effect, const Choice& chosen);

}  // namespace vorel::resolution
