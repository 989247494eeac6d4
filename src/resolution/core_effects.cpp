#include "resolution/core_effects.h"

#include <algorithm>

#include "base/sort_unique.h"
#include "resolution/core_splitting.h"

namespace vorel::resolution {

CoreEffects::CoreEffects(const Candidates& candidates)
    : candidates_{candidates}, next_to_(candidates.prefix().events.size()) {
  for (const OccurrenceId id : candidates.all_occurrences()) {
    const EdgeOccurrence& occurrence = candidates.occurrence(id);
    for (const EventId event : occurrence.causes) next_to_[event].push_back(id);
    for (const EventId event : occurrence.followers) next_to_[event].push_back(id);
  }
}

// What lies next to no event of the core's sum stands in one stage on both sides.
CoreEffect CoreEffects::of(const conflicts::Core& core) const {
  std::vector<OccurrenceId> touched;
  for (const EventId event : core.sum)
    touched.insert(touched.end(), next_to_[event].begin(), next_to_[event].end());
  base::sort_unique(touched);

  CoreEffect effect;
  for (auto first = touched.begin(); first != touched.end();) {
    const CandidateId candidate = candidates_.candidate_of(*first);
    bool is_split = false, is_odd = false;
    for (; first != touched.end() && candidates_.candidate_of(*first) == candidate; ++first) {
      const EdgeStage one = stage_after(core.first, candidates_.occurrence(*first));
      const EdgeStage other = stage_after(core.second, candidates_.occurrence(*first));
      is_split |= (one == EdgeStage::can_fire) != (other == EdgeStage::can_fire);
      is_odd ^= (one == EdgeStage::has_fired) != (other == EdgeStage::has_fired);
    }
    if (is_split) {
      effect.breakers.push_back(candidate);
    } else if (is_odd) {
      effect.togglers.push_back(candidate);
    }
  }
  return effect;
}

CoreOutcome outcome(const CoreEffect& effect, const Choice& chosen) {
  const auto is_chosen = [&chosen](CandidateId candidate) { return chosen[candidate]; };
  if (std::ranges::any_of(effect.breakers, is_chosen)) return CoreOutcome::broken;
  const bool is_odd = std::ranges::count_if(effect.togglers, is_chosen) % 2 != 0;
  return is_odd ? CoreOutcome::resolved : CoreOutcome::kept;
}

}  // namespace vorel::resolution
