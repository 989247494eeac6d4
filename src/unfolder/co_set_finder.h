// unfolder/co_set_finder.h - the sets of concurrent conditions that enable a transition.
// Here:      the search for all presets that contain a new condition of an event; unsafe places.
// Not here:  what becomes of a preset (unfolder/unfolder.h).
//
// Each co-set is found once: from its highest condition. Candidates for a place are the older
// conditions of the place that are concurrent with the event's new ones; they are listed at most
// once for each event, whatever the number of transitions that ask. The place with the fewest goes
// first. Scratch of one worker.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "unfolder/branching_process.h"
#include "unfolder/concurrency_relation.h"
#include "unfolder/local_histories.h"
#include "unfolder/marked_past.h"
#include "unfolder/stop_check.h"

namespace vorel::unfolder {

class CoSetFinder {
 public:
  // Called with the transition and its preset, sorted by condition.
  using Found = std::function<void(TransitionId, std::span<const ConditionId>)>;
  // Two concurrent conditions of one place, the younger one first.
  using UnsafePair = std::pair<ConditionId, ConditionId>;

  CoSetFinder(const BranchingProcess& process, Found found, std::function<bool()> must_stop);

  // Presets completed by the new conditions of an event in the prefix, or by the initial ones
  // (no_event). Of relation and histories one is null. Some only, if it has to stop.
  void run(EventId e, const ConcurrencyRelation* relation, const LocalHistories* histories);

  // The first unsafe pair that the last run met.
  const std::optional<UnsafePair>& unsafe() const { return unsafe_; }

 private:
  using List = std::vector<ConditionId>;

  void list_all_candidates();
  void list_candidates(PlaceId place);
  void mark_past();
  const List& older_candidates(PlaceId place);
  ConditionId sibling_of(ConditionId newest, PlaceId place) const;
  void check_safety(ConditionId newest);
  void complete(TransitionId t, ConditionId newest);
  bool has_candidates(TransitionId t, ConditionId newest);
  void complete_pair(PlaceId place);
  bool choose_forced();
  void choose_condition(ConditionId c);
  void unchoose(std::size_t size);
  void choose(std::size_t depth);
  bool narrow(std::size_t depth);
  bool fits(ConditionId older);
  bool are_concurrent(ConditionId c, ConditionId d);
  bool concurrent(ConditionId chosen, ConditionId other);
  void report(ConditionId last);

  const BranchingProcess& process_;
  const FlatNet& net_;
  const Found found_;
  StopCheck must_stop_;

  EventId event_ = no_event;  // whose new conditions are first_ .. end_ - 1
  ConditionId first_ = 0, end_ = 0;
  const ConcurrencyRelation* relation_ = nullptr;
  const LocalHistories* histories_ = nullptr;
  std::uint32_t conflict_ = 0;  // where histories were last found to be in conflict
  MarkedPast past_, other_past_;
  bool is_marked_ = false;  // past_ has been started for the event
  bool is_wide_ = false;    // the preset being completed: marks tell what fits, not the relation
  std::optional<UnsafePair> unsafe_;

  std::vector<List> older_;            // by place: candidates below first_
  std::vector<std::uint32_t> listed_;  // by place: the round in which older_ was filled
  std::uint32_t round_ = 0;
  std::vector<ConditionId> newest_at_;  // by place: of the last event run that produced there
  // By transition: where in its preset a place without candidates was met last. Of a wide preset
  // most conditions come before the last one; looking there first, they need not see all of it.
  std::vector<std::uint32_t> last_gap_;

  TransitionId transition_ = 0;  // whose preset is being completed
  std::vector<ConditionId> chosen_;
  std::vector<std::vector<List>> open_;  // by depth: the candidates of each place still to choose
  List sorted_;
  std::vector<ConditionGroups::Group> groups_;  // scratch of histories_
};

}  // namespace vorel::unfolder
