// verify/gate_runs.h - what the gates do while the environment waits.
// Here:      whether a wire can come to its next edge by gates and silent transitions alone, from
// one
//            marking of the composition, and what of the marking that takes.
// Not here:  the search for markings to start from (verify/progress_check.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "verify/composition.h"

namespace vorel::verify {

enum class RunOutcome : std::uint8_t { comes, never, unknown };

class GateRuns {
 public:
  // The composition must outlive it.
  explicit GateRuns(const Composition& composition);

  struct Run {
    RunOutcome outcome = RunOutcome::unknown;
    // If it comes: places whose tokens the run takes. It can be made wherever they are marked.
    std::vector<std::uint32_t> needed;
  };
  // First all that can fire does, round by round. Where no gate can take away what another is about
  // to do, that decides: it ends in rest or goes round without the edge only if nothing leads
  // there. Otherwise the markings are explored one by one, up to a bound.
  Run run_to_edge(WireId wire, const std::vector<bool>& marking, bool is_persistent,
                  std::size_t max_markings = 20'000) const;

 private:
  using Step = std::uint32_t;  // number of a move

  bool is_enabled(Step move, const std::vector<bool>& marking) const;
  void fire(Step move, std::vector<bool>& marking) const;
  std::vector<Step> enabled_moves(const std::vector<bool>& marking) const;
  // An edge of the wire that can fire, or no_move.
  Step edge_among(const std::vector<Step>& moves, WireId wire) const;
  bool run_in_rounds(WireId wire, std::vector<bool> marking, std::vector<Step>& steps) const;
  RunOutcome explore(WireId wire, const std::vector<bool>& marking, std::size_t max_markings,
                     std::vector<Step>& steps) const;
  // Of the tokens of the start, those that the last step depends on.
  std::vector<std::uint32_t> tokens_needed(const std::vector<Step>& steps) const;

  const Composition& composition_;
  std::vector<Step> inner_moves_;  // all but those of the environment
};

}  // namespace vorel::verify
