// net/occurrence_depth.h - the occurrence depths of all conditions of a prefix.
// The occurrence depth of a condition is the number of conditions of its place on the longest path
// to it, itself included, longest in this number.
// Here:      counting, for all conditions at once.
// Not here:  what is merged by the depths (net/merge.h).
//
// The counts of the places are carried along the causal order, where two paths meet the larger one
// stays; that is exact for any prefix, of a safe net or not. Only places with a second condition
// are carried. Time is the links times the logarithm of the number of places, and as much for each
// place in which causes of an event differ (net/causal_arrays.h).
#pragma once

#include <cstdint>
#include <vector>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::net {

template <class N>
class OccurrenceDepths {
 public:
  using Condition = ConditionOf<N>;
  using Event = EventOf<N>;

  explicit OccurrenceDepths(const PrefixOf<N>& prefix);

  // Of a condition in the list.
  std::uint32_t operator[](const Condition& condition) const { return depth_[condition.index]; }

  // visit(condition, depth) for all that the event produces, those that are left out of the list
  // included.
  template <class Visit>
  void visit_postset(const Event& event, Visit visit) const {
    visit_slots(event, [this, &visit](const Condition& condition, std::uint32_t slot) {
      visit(condition, depth_[slot]);
    });
  }

 private:
  // The slot of a condition is its index. Those left out of the list have slots behind the others.
  template <class Visit>
  void visit_slots(const Event& event, Visit visit) const {
    std::uint32_t left_out = first_left_out_[event];
    for (const Condition* condition : event.postset) {
      visit(*condition, condition->index == base::no_index ? left_out++ : condition->index);
    }
  }
  void number_slots(const PrefixOf<N>& prefix);
  void count(const PrefixOf<N>& prefix);

  std::vector<std::uint32_t> depth_;                      // by slot
  base::IndexedBy<Event, std::uint32_t> first_left_out_;  // slot of the first left-out condition
};

}  // namespace vorel::net
