// resolution/reduction_check.h - whether a transition can be made to wait for others.
// Here:      the conditions of validity, as questions about runs of the prefix before the change.
// Not here:  which sources come into question (resolution/reductions.h).
//
// Let x be the tokens of the new place after a run of the old net: one if it is marked, and one for
// each source in the run, less one for each target. The new net has the runs in which the target
// never fires at x = 0. Asked of the old prefix, whose configurations stand for all markings with
// all values of x once each cut-off agrees with its correspondents in x (that is for the caller to
// see to, as it is linear in the sources):
//   1. x is never above 1. So the new net is safe.
//   2. A run that cannot go on but for the target, and for what competes with it, and that enables
//      the target, has x at least 1. So whoever runs on without the target comes to a source.
//   3. While x is below 0, no event that the target has made possible takes a token from one that
//      needs nothing of it. Such a choice would be made too early for the new net: the loser may be
//      the way to a source.
//   4. While x is 0, no event takes its token from another one of the target's signal and leaves
//      the target enabled. In the old net the signal stays excited; in the new one it would not be,
//      which makes a hazard where there was none. A dummy that loses its token counts if it leads
//      to the signal or to a source, and the target as enabled if dummies may enable it. What some
//      dummy disables by itself is not looked after.
// If besides no two sources are ever concurrent (again for the caller), the new net takes away no
// event: each run of the old net that starts where the new one can be is part of a longer one that
// is a run of the new net, in another order. For suppose the target g is enabled at x = 0, has
// fired in the old net, and the events F, which g has made possible, have made the way from there
// to a source impossible, while F without its last event h leaves it open. Then h competes with the
// first step on that way that is not possible any more. F without h has no source, as that would be
// concurrent with the one at the end of the way; so x is below 0 there, and 3 is hurt. If F is
// empty, 2 is hurt.
//
// More is asked than that nothing is stopped for good. A source that comes only if a choice is made
// in its favour, some time, does not count: 2 wants it on all ways up to the first repetition, at a
// cut-off with as many targets before it as before its correspondents. Nor are values of x allowed
// to differ where neither source nor target comes any more, or a choice between others to be open
// below 0 that does not matter. Of 1,000 small random STGs without deadlocks the valid reductions
// with one or two sources, concurrent with the target, were found but for some six in a hundred.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "resolution/encoded_run.h"
#include "resolution/transformation.h"

namespace vorel::resolution {

// A run that speaks against a reduction, and would against others: the sources in it, and one more
// if the place is marked, must be at most (or at least) so many.
struct TokenBound {
  Occurrences run;
  bool is_upper;
  std::uint32_t bound;
};

class ReductionCheck {
 public:
  // For all reductions with the target. Prefix and counts must outlive it, and the prefix must not
  // change.
  ReductionCheck(const net::StgPrefix& prefix, OccurrenceCounts& counts,
                 const sat::CnfParams& params, const net::StgTransition& target);

  // Nullopt when 1 to 4 hold, and after a reported failure.
  std::optional<TokenBound> objection(const Reduction& reduction);
  // Whether the target ever has to wait.
  bool changes_anything(const Reduction& reduction);

 private:
  using Event = net::StgPrefix::Event;
  using Condition = net::StgPrefix::Condition;

  // Of run_: the target is enabled once the winner has taken a token from the loser.
  struct Hazard {
    const net::StgTransition *winner, *loser;
    bool excites;  // the loser is of the target's signal, or leads to it
    sat::Lit lit;
  };

  void encode_stalling();
  void exclude_cut_offs_to_pass();
  void find_competitions();
  void find_hazards();
  sat::Lit hazard_lit(const Event& winner, const Event& loser);
  bool is_hazard_of(const Hazard& hazard, const Reduction& reduction) const;
  std::optional<TokenBound> hazard(const Reduction& reduction);

  const net::StgPrefix& prefix_;
  OccurrenceCounts& counts_;
  const net::StgTransition& target_;
  EncodedRun run_;
  EncodedRun stalled_;           // for the second question
  sat::Lits target_is_enabled_;  // of run_: for each event of the target
  // Of run_: for each two events of which one takes a token from the other, which waits for less.
  sat::Lits competitions_;
  std::vector<Hazard> hazards_;
};

}  // namespace vorel::resolution
