// unfolder/local_histories.h - what was consumed last at each place, for every event in the prefix.
// Here:      what events share of it, the conditions of a place one behind the other, and what two
//            histories say about each other.
// Not here:  the search that asks (unfolder/co_set_finder.h), the relation that answers from memory
//            (unfolder/concurrency_relation.h).
//
// In a safe net the conditions of one place in one configuration follow each other. So a local
// configuration is known by the last event that consumed at each place, and that of its union with
// another one by the later of both. Two of them are in conflict exactly if at a place with several
// consumers neither last event comes after the other: where no two transitions compete, nobody ever
// conflicts. And a condition of a place is concurrent with an event only if it comes behind what
// the event's configuration consumed there last, behind conditions that are concurrent with it too:
// the others need not be looked at.
//
// A history has an entry for each place with several consumers and one for all other places of a
// transition. Histories share what they agree in, so two of them are compared, and a history is
// made from those of the causes, in time and memory of where they differ. When they take too much
// memory the older half is given up; whoever meets such an event has to find out otherwise. Where
// much of that is needed again, more memory is taken.
//
// Writing is for the main thread between phases, the questions may be asked by all workers.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/chains.h"
#include "base/shared_arrays.h"
#include "unfolder/branching_process.h"
#include "unfolder/condition_groups.h"

namespace vorel::unfolder {

class LocalHistories {
 public:
  // Of the initial conditions and all events given, which have entered the prefix in this order.
  // `most_nodes`: of 64 bytes each, before the older half is given up for the first time.
  LocalHistories(const BranchingProcess& process, std::span<const EventId> entered,
                 std::uint32_t most_nodes);

  // Enters events that have just entered the prefix; none is a cause of another.
  void add_batch(std::span<const EventId> batch);

  // The history of the condition's producer is at hand.
  bool is_known(ConditionId c) const { return conditions_[c].history != given_up; }

  // Whoever asks many questions keeps the entry at which it met the last conflict, 0 at first: the
  // next one is there, mostly.
  //
  // Both are known. In a safe net they are concurrent exactly if neither consumes the other and
  // their pasts are not in conflict.
  bool are_concurrent(ConditionId c, ConditionId d, std::uint32_t& conflict) const {
    return agree(conditions_[c].history, conditions_[d].history, conflict) &&
           !is_consumed_by(c, d) && !is_consumed_by(d, c);
  }
  // The pasts of a known condition and an event of the last batch are not in conflict.
  bool in_harmony(ConditionId c, EventId e, std::uint32_t& conflict) const {
    return agree(conditions_[c].history, history_of(e), conflict);
  }

  // What the union of the local configurations of events amounts to: all are known, and none is in
  // conflict with another one.
  struct Sum {
    std::uint32_t size = 0, dummies = 0;
    StateHash state;
  };
  bool are_known(std::span<const EventId> events) const;
  // Beyond what the first one has. Takes the time of what that is, or of where the histories
  // differ. `scratch` is the caller's own.
  Sum added_to_first(std::span<const EventId> events, std::vector<std::uint32_t>& scratch) const;

  // Calls fits(c) for conditions of the place below `end` until it is false for them and so for all
  // behind, but not for all that are in conflict with the event; lists, sorted, those for which it
  // is true. The event is of the last batch, `scratch` the caller's own.
  template <class Fits>
  void list_candidates(EventId e, PlaceId place, ConditionId end, Fits fits,
                       std::vector<ConditionId>& list,
                       std::vector<ConditionGroups::Group>& scratch) const;

 private:
  using History = base::SharedArrays::Array;  // of records by entry; 0: nothing was consumed
  static constexpr History given_up = 0xFFFFFFFFu;
  static constexpr History awaited = 0xFFFFFFFEu;  // given up, and being restored

  // What an event consumed from the places of one entry.
  struct Record {
    EventId event = no_event;
    std::uint32_t entry = 0;
    std::uint32_t slot = 0;  // of the first of these places
    Sum sum;                 // of the events up to this one that are counted at this entry
  };

  std::uint32_t number_entries();
  void add_initial();
  void add_records(EventId e);
  void make_history(EventId e);
  void add_conditions(EventId e);
  void add_to_group(ConditionId c);
  void restore_history(EventId e);
  void limit_memory();
  void give_up_oldest();
  bool list_missing(History history, std::span<const EventId> events,
                    std::vector<EventId>& missing) const;

  History history_of(EventId e) const { return e == no_event ? 0 : histories_[e]; }
  std::uint32_t last_at(History history, PlaceId place) const {
    return entry_[place] == base::no_index ? 0 : shared_.at(history, entry_[place]);
  }
  // Of an event that is not in conflict with it. Saves looking for where both differ, which may be
  // all that has happened since the event.
  bool contains(History history, EventId e) const {
    const std::uint32_t record = first_record_[e];
    return shared_.at(history, records_[record].entry) >= record;
  }
  // At places with several consumers.
  bool agree(History a, History b, std::uint32_t& conflict) const {
    assert(a != given_up && b != given_up);
    if (a == b || a == 0 || b == 0 || choice_count_ == 0) return true;
    const std::uint32_t in_a = shared_.at(a, conflict), in_b = shared_.at(b, conflict);
    if (in_a != in_b && in_a != 0 && in_b != 0 && !follow(in_a, in_b)) return false;
    return shared_.agree(a, b, choice_count_, [&](auto entry, auto last_a, auto last_b) {
      if (follow(last_a, last_b)) return true;
      conflict = entry;
      return false;
    });
  }
  // One of the two records of an entry comes after the other one.
  bool follow(std::uint32_t a, std::uint32_t b) const {
    return chains_.depth(a) < chains_.depth(b) ? chains_.is_on_way(a, b) : chains_.is_on_way(b, a);
  }
  // A past goes on behind a record by the next one.
  using Fork = ConditionGroups::Fork;
  ConditionGroups::Side side(History history, const Fork& fork) const;
  std::optional<Fork> find_fork(History a, History b) const;
  struct GroupMembers;
  bool is_consumed_by(ConditionId c, ConditionId d) const;

  const BranchingProcess& process_;
  const FlatNet& net_;
  // Entries by place, those of places with several consumers first; what to add to the slot of the
  // entry's record to get that of the place.
  std::vector<std::uint32_t> entry_, offset_;
  std::uint32_t choice_count_ = 0;

  // By transition: the entry at which its events are counted.
  std::vector<std::uint32_t> counting_entry_;

  base::SharedArrays shared_;
  std::uint32_t most_nodes_;
  std::uint32_t restored_nodes_ = 0;  // of histories that had been given up, since the last time
  std::vector<History> histories_;    // by event
  std::vector<EventId> kept_;  // whose histories are at hand, in the order in which they entered
  std::vector<Record> records_;
  base::Chains chains_;                      // records, each behind the one of its entry before it
  std::vector<std::uint32_t> first_record_;  // by event
  std::vector<History> merging_;             // scratch
  std::vector<EventId> causes_, missing_, lost_;  // scratch

  // A slot is one arc from a condition to an event.
  struct Condition {
    History history;                   // of its producer
    std::uint32_t before;              // the record of its place before it
    std::uint32_t first_consumer = 0;  // a slot; 0: none
    ConditionId next = no_condition;   // in the same small group
  };
  std::vector<Condition> conditions_;
  std::vector<std::uint32_t> next_consumer_;         // by slot
  ConditionGroups groups_;                           // of conditions of one place
  std::vector<ConditionGroups::Group> behind_slot_;  // by slot
  std::vector<ConditionGroups::Group> behind_none_;  // behind nothing
};

template <class Fits>
void LocalHistories::list_candidates(EventId e, PlaceId place, ConditionId end, Fits fits,
                                     std::vector<ConditionId>& list,
                                     std::vector<ConditionGroups::Group>& scratch) const {
  const History history = history_of(e);
  const std::uint32_t last = last_at(history, place);
  const std::size_t start = list.size();
  const auto search = [&](ConditionGroups::Group group) {
    if (group == ConditionGroups::empty) return;
    groups_.visit(
        group, [&](const Fork& fork) { return side(history, fork); },
        [&](ConditionId c) {
          if (c < end && fits(c)) list.push_back(c);
          return conditions_[c].next;
        },
        scratch);
  };
  search(last == 0 ? behind_none_[place] : behind_slot_[records_[last].slot + offset_[place]]);
  for (std::size_t i = start; i < list.size(); ++i) {
    for (std::uint32_t slot = conditions_[list[i]].first_consumer; slot != 0;
         slot = next_consumer_[slot]) {
      search(behind_slot_[slot]);
    }
  }
  std::sort(list.begin() + static_cast<std::ptrdiff_t>(start), list.end());
}

}  // namespace vorel::unfolder
