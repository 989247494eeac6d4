// verify/gate_runs.h - what the gates do while the environment waits.
// Here:      whether an output that is due can come by gates and silent transitions alone, from one
//            marking of the composition, and what of the marking that takes.
// Not here:  the search for markings to start from (verify/progress_check.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "verify/composition.h"
#include "verify/edge_presets.h"

namespace vorel::verify {

enum class RunOutcome : std::uint8_t { comes, never, unknown };

class GateRuns {
 public:
  static constexpr std::size_t usual_max_markings = 20'000;

  // Both must outlive it.
  GateRuns(const Composition& composition, const EdgePresets& presets);

  // If it comes, the run can be made and ends as well from all markings with tokens on the places
  // that are needed and none on those that are absent.
  struct Run {
    RunOutcome outcome = RunOutcome::unknown;
    std::vector<std::uint32_t> needed, absent;
  };
  // The wire is due. First all that can fire does, round by round. Where no gate can take away what
  // another is about to do, that decides: it ends in rest or goes round without the edge only if
  // nothing leads there. Otherwise the markings are explored one by one, up to a bound.
  Run run_to_edge(const Awaited& awaited, const std::vector<bool>& marking, bool is_persistent,
                  std::size_t max_markings = usual_max_markings) const;

 private:
  using Step = std::uint32_t;  // number of a move

  bool is_enabled(Step move, const std::vector<bool>& marking) const;
  void fire(Step move, std::vector<bool>& marking) const;
  std::vector<bool> after(const std::vector<Step>& steps, std::vector<bool> marking) const;
  std::vector<Step> enabled_moves(const std::vector<bool>& marking) const;
  // An edge of the wire that can fire, or no_move.
  Step edge_among(const std::vector<Step>& moves, WireId wire) const;
  bool is_due(WireId wire, const std::vector<bool>& marking) const;
  // An arbiter has chosen another, or one of the moves is the edge, which is added to the steps.
  bool has_come(const Awaited& awaited, const std::vector<bool>& marking,
                const std::vector<Step>& enabled, std::vector<Step>& steps) const;
  bool run_in_rounds(const Awaited& awaited, std::vector<bool> marking,
                     std::vector<Step>& steps) const;
  RunOutcome explore(const Awaited& awaited, const std::vector<bool>& marking,
                     std::size_t max_markings, std::vector<Step>& steps) const;
  // The last step and those that it depends on.
  std::vector<Step> needed_steps(const std::vector<Step>& steps) const;
  // Of the tokens of the start, those that some step takes.
  std::vector<std::uint32_t> tokens_taken(const std::vector<Step>& steps) const;
  // Why the wire is not due behind the steps: of each set of places that would let it change, one
  // without a token from the start, unless the steps take one of its tokens.
  std::vector<std::uint32_t> tokens_absent(WireId wire, const std::vector<Step>& steps,
                                           const std::vector<bool>& start) const;

  const Composition& composition_;
  const EdgePresets& presets_;
  std::vector<Step> inner_moves_;  // all but those of the environment
};

}  // namespace vorel::verify
