// flow/stg_game.h - the token game on an STG, from its initial state.
// Here:      firing, what can fire, the trace so far; on the net alone, without a prefix.
// Not here:  searching (flow/stg_states.h).
#pragma once

#include <span>
#include <vector>

#include "flow/flow_result.h"

namespace vorel::flow {

class StgGame {
 public:
  // Keeps a reference. Unknown initial values count as those that the signs of the edges imply, or
  // else 0.
  explicit StgGame(const net::Stg& stg);

  bool is_enabled(const net::StgTransition& transition) const;
  // What is enabled fires. The place that has more than one token then, null if there is none.
  const net::StgPlace* fire(const net::StgTransition& transition);

  // The edges of signals that can fire, perhaps after dummies, by index. Tries all ways of firing
  // dummies.
  std::vector<const net::StgTransition*> edges() const;
  bool can_change(const net::Signal& signal) const;

  const std::vector<std::uint32_t>& tokens() const { return tokens_; }
  const std::vector<bool>& values() const { return values_; }
  const StgTrace& trace() const { return trace_; }

 private:
  const net::Stg& stg_;
  std::vector<std::uint32_t> tokens_;  // by place
  std::vector<bool> values_;           // by signal
  StgTrace trace_;
};

// The transitions must be able to fire one after the other.
StgTrace trace_of(const net::Stg& stg, std::span<const net::StgTransition* const> transitions);

}  // namespace vorel::flow
