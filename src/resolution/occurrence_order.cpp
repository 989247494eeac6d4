#include "resolution/occurrence_order.h"

#include <algorithm>
#include <span>
#include <vector>

namespace vorel::resolution {
namespace {

using Event = net::StgPrefix::Event;
using Condition = net::StgPrefix::Condition;
using Occurrences = std::vector<OccurrenceId>;

}  // namespace

// Goes through events and occurrences in one causal order of all: that of the events by number, and
// behind each event the occurrences of which it is the last cause.
class OccurrenceOrder::Maker {
 public:
  Maker(const Candidates& candidates, OccurrenceOrder& made)
      : candidates_{candidates},
        prefix_{candidates.prefix()},
        made_{made},
        leaders_(prefix_.events.size()),
        caused_(prefix_.events.size()),
        ready_(prefix_.events.size() + 1),
        moved_by_(prefix_.conditions.size()) {}

  void run() {
    link_occurrences();
    find_before();
    find_after();
    find_conflicts();
  }

 private:
  void link_occurrences() {
    for (const OccurrenceId id : candidates_.all_occurrences()) {
      const EdgeOccurrence& occurrence = candidates_.occurrence(id);
      for (const EventId event : occurrence.followers) leaders_[event].push_back(id);
      for (const EventId event : occurrence.causes) caused_[event].push_back(id);
      for (const ConditionId condition : occurrence.moved) moved_by_[condition].push_back(id);
      ready_[occurrence.causes.empty() ? 0 : occurrence.causes.back().value + 1].push_back(id);
    }
    // One that moves a condition has a single cause, and comes before those that consume it.
    for (Occurrences& list : ready_) {
      std::ranges::stable_partition(
          list, [this](OccurrenceId id) { return !candidates_.occurrence(id).moved.empty(); });
    }
  }

  template <class OnEvent, class OnOccurrence>
  void forwards(const OnEvent& on_event, const OnOccurrence& on_occurrence) {
    for (std::uint32_t event = 0; event < ready_.size(); ++event) {
      if (event > 0) on_event(EventId{event - 1});
      for (const OccurrenceId id : ready_[event]) on_occurrence(id);
    }
  }
  template <class OnEvent, class OnOccurrence>
  void backwards(const OnEvent& on_event, const OnOccurrence& on_occurrence) {
    for (auto event = static_cast<std::uint32_t>(ready_.size()); event-- > 0;) {
      const Occurrences& list = ready_[event];
      for (auto id = list.rbegin(); id != list.rend(); ++id) on_occurrence(*id);
      if (event > 0) on_event(EventId{event - 1});
    }
  }

  // The occurrence itself and all that the table has in its row.
  void add_with(base::BitRows& table, std::size_t row, OccurrenceId id) {
    table.add(row, made_.row(id));
    table.set(row, id.value);
  }

  template <class Visit>
  void for_each_producer(EventId event, const Visit& visit) {
    for (const Condition* condition : base::element(prefix_.events, event).preset)
      if (!condition->is_initial()) visit(base::id_of(*condition->pre_event));
  }

  void find_before() {
    base::BitRows& table = made_.before_;
    const auto event_row = [&](EventId event) {
      for_each_producer(event,
                        [&](EventId cause) { table.add(made_.row(event), made_.row(cause)); });
      for (const OccurrenceId id : leaders_[event]) add_with(table, made_.row(event), id);
    };
    const auto occurrence_row = [&](OccurrenceId id) {
      const EdgeOccurrence& occurrence = candidates_.occurrence(id);
      for (const EventId cause : occurrence.causes) table.add(made_.row(id), made_.row(cause));
      for (const ConditionId condition : occurrence.consumed)
        for (const OccurrenceId mover : moved_by_[condition]) add_with(table, made_.row(id), mover);
    };
    forwards(event_row, occurrence_row);
  }

  void find_after() {
    // Those that consume a condition which some other occurrence moves.
    base::IndexedBy<Condition, Occurrences> consumers(prefix_.conditions.size());
    for (const OccurrenceId id : candidates_.all_occurrences())
      for (const ConditionId condition : candidates_.occurrence(id).consumed)
        if (!moved_by_[condition].empty()) consumers[condition].push_back(id);

    base::BitRows& table = made_.after_;
    const auto event_row = [&](EventId event) {
      for (const Condition* condition : base::element(prefix_.events, event).postset)
        for (const Event* next : condition->postset)
          table.add(made_.row(event), made_.row(base::id_of(*next)));
      for (const OccurrenceId id : caused_[event]) add_with(table, made_.row(event), id);
    };
    const auto occurrence_row = [&](OccurrenceId id) {
      const EdgeOccurrence& occurrence = candidates_.occurrence(id);
      for (const EventId next : occurrence.followers) table.add(made_.row(id), made_.row(next));
      for (const ConditionId condition : occurrence.moved)
        for (const OccurrenceId consumer : consumers[condition])
          add_with(table, made_.row(id), consumer);
    };
    backwards(event_row, occurrence_row);
  }

  // In conflict with an event is what comes after an event that takes one of its conditions away,
  // and what is in conflict with its causes. An occurrence takes nothing away.
  void find_conflicts() {
    base::BitRows& table = made_.conflicting_;
    const auto event_row = [&](EventId event) {
      for (const Condition* condition : base::element(prefix_.events, event).preset)
        for (const Event* rival : condition->postset)
          if (base::id_of(*rival) != event)
            table.add(made_.row(event), made_.after(base::id_of(*rival)));
      for_each_producer(event,
                        [&](EventId cause) { table.add(made_.row(event), made_.row(cause)); });
    };
    const auto occurrence_row = [&](OccurrenceId id) {
      for (const EventId cause : candidates_.occurrence(id).causes)
        table.add(made_.row(id), made_.row(cause));
    };
    forwards(event_row, occurrence_row);
  }

  const Candidates& candidates_;
  const net::StgPrefix& prefix_;
  OccurrenceOrder& made_;
  base::IndexedBy<Event, Occurrences> leaders_;  // those that the event follows
  base::IndexedBy<Event, Occurrences> caused_;
  std::vector<Occurrences> ready_;  // by last cause, plus one; 0: without causes
  base::IndexedBy<Condition, Occurrences> moved_by_;
};

OccurrenceOrder::OccurrenceOrder(const Candidates& candidates)
    : events_{static_cast<std::uint32_t>(candidates.prefix().events.size())},
      occurrences_{candidates.all_occurrences().size()},
      before_(events_ + std::size_t{occurrences_}, occurrences_),
      after_(events_ + std::size_t{occurrences_}, occurrences_),
      conflicting_(events_ + std::size_t{occurrences_}, occurrences_) {
  Maker(candidates, *this).run();
}

}  // namespace vorel::resolution
