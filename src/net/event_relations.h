// net/event_relations.h - conflict, causality and concurrency in a prefix.
// Here:      how any event or condition relates to a chosen one; co-sets.
// Not here:  local configurations (net/causality.h).
//
// No relation is stored: the past of the chosen element is marked, then all that is in conflict
// with it or follows it. A choice takes time linear in the links of the prefix at most, and a byte
// and a pointer per event are all the memory; a table of all pairs would be quadratic. So ask all
// about one choice before the next. Events need not be numbered causally. The prefix must not
// change meanwhile, but all of this works within an edit, too (net/edit.h).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::net {

enum class EventRelation : std::uint8_t { concurrent, same, cause, effect, conflict };

// Cut-offs count as ordinary events.
class EventRelations {
 public:
  using Event = StgPrefix::Event;
  using Condition = StgPrefix::Condition;

  explicit EventRelations(const StgPrefix& prefix) : relation_{prefix.events.size()} {}

  // What the questions below are about from now on.
  void choose(const Event& event);
  void choose(const Condition& condition);

  // What `event` is to the chosen one: its cause, its effect, ... Of a chosen condition the causes
  // are all events that lead to it, the producer included; its effects are those that need it.
  EventRelation relation_of(const Event& event) const { return relation_[event]; }
  // True when some cut has both the condition and the chosen condition. Not for the chosen itself.
  bool is_concurrent(const Condition& condition) const;

 private:
  void clear();
  void mark_past(std::span<Event* const> last);
  void mark_conflicts();
  void mark_after(EventRelation relation, std::size_t first);
  bool enter(Event& event, EventRelation relation);

  base::IndexedBy<Event, EventRelation> relation_;
  std::vector<Event*> marked_;  // all that are not concurrent; the scratch of the walks as well
};

// A set of conditions that some cut has all of, by place.
using CoSet = std::vector<StgPrefix::Condition*>;

// All co-sets with one condition of each of the places, which differ; by the conditions' numbers,
// those of the first place first. Conditions after cut-offs are left out. For one place this is
// linear, else each condition of each place but the last costs a choice.
std::vector<CoSet> co_sets(const StgPrefix& prefix, std::span<const StgPlace* const> places);

}  // namespace vorel::net
