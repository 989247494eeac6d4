#include "net/event_relations.h"

#include <algorithm>
#include <cassert>

namespace vorel::net {
namespace {

using Event = StgPrefix::Event;
using Condition = StgPrefix::Condition;

// Extends co-sets place by place.
class CoSetSearch {
 public:
  CoSetSearch(const StgPrefix& prefix, std::span<const StgPlace* const> places)
      : relations_{prefix}, occurrences_(places.size()) {
    base::IndexedBy<StgPlace, std::uint32_t> position(prefix.places.size(), base::no_index);
    for (std::uint32_t i = 0; i < places.size(); ++i) position[*places[i]] = i;
    for (const auto& condition : prefix.conditions) {
      if (condition->index == base::no_index) continue;  // removed by an edit that is under way
      const std::uint32_t place = position[*condition->place];
      const bool is_last = !condition->is_initial() && condition->pre_event->is_cut_off();
      if (place != base::no_index && !is_last) occurrences_[place].push_back(condition.get());
    }
  }

  std::vector<CoSet> run() {
    extend(occurrences_);
    return std::move(found_);
  }

 private:
  // `candidates` are, for each place still without one, its conditions that go with the chosen.
  void extend(std::span<const CoSet> candidates) {
    if (candidates.empty()) {
      found_.push_back(chosen_);
      return;
    }
    for (Condition* condition : candidates.front()) {
      chosen_.push_back(condition);
      extend(concurrent_ones(*condition, candidates.subspan(1)));
      chosen_.pop_back();
    }
  }

  std::vector<CoSet> concurrent_ones(const Condition& condition, std::span<const CoSet> lists) {
    std::vector<CoSet> rest(lists.size());
    if (lists.empty()) return rest;
    relations_.choose(condition);
    for (std::size_t i = 0; i < lists.size(); ++i) {
      std::ranges::copy_if(lists[i], std::back_inserter(rest[i]),
                           [this](const Condition* c) { return relations_.is_concurrent(*c); });
    }
    return rest;
  }

  EventRelations relations_;
  std::vector<CoSet> occurrences_;
  CoSet chosen_;
  std::vector<CoSet> found_;
};

}  // namespace

void EventRelations::choose(const Event& event) {
  clear();
  Event* const chosen = const_cast<Event*>(&event);
  mark_past({&chosen, 1});
  relation_[event] = EventRelation::same;
  mark_conflicts();
  const std::size_t first = marked_.size();
  for (const Condition* condition : event.postset) {
    for (Event* consumer : condition->postset) enter(*consumer, EventRelation::effect);
  }
  mark_after(EventRelation::effect, first);
}

void EventRelations::choose(const Condition& condition) {
  clear();
  mark_past(condition.producers());
  mark_conflicts();
  const std::size_t first = marked_.size();
  for (Event* consumer : condition.postset) enter(*consumer, EventRelation::effect);
  mark_after(EventRelation::effect, first);
}

bool EventRelations::is_concurrent(const Condition& condition) const {
  const auto has_happened = [this](const Event* event) {
    return relation_[*event] == EventRelation::cause;
  };
  if (std::ranges::any_of(condition.postset, has_happened)) return false;
  if (condition.is_initial()) return true;
  const EventRelation producer = relation_[*condition.pre_event];
  return producer == EventRelation::concurrent || producer == EventRelation::cause;
}

void EventRelations::clear() {
  for (const Event* event : marked_) relation_[*event] = EventRelation::concurrent;
  marked_.clear();
}

bool EventRelations::enter(Event& event, EventRelation relation) {
  if (relation_[event] != EventRelation::concurrent) return false;
  relation_[event] = relation;
  marked_.push_back(&event);
  return true;
}

void EventRelations::mark_past(std::span<Event* const> last) {
  for (Event* event : last) enter(*event, EventRelation::cause);
  for (std::size_t next = 0; next < marked_.size(); ++next) {
    for (const Condition* condition : marked_[next]->preset) {
      if (!condition->is_initial()) enter(*condition->pre_event, EventRelation::cause);
    }
  }
}

// What competes with the past for a condition, and all that follows.
void EventRelations::mark_conflicts() {
  const std::size_t first = marked_.size();
  for (std::size_t i = 0; i < first; ++i) {
    for (const Condition* condition : marked_[i]->preset) {
      for (Event* rival : condition->postset) enter(*rival, EventRelation::conflict);
    }
  }
  mark_after(EventRelation::conflict, first);
}

// Closes what has been marked from `first` on.
void EventRelations::mark_after(EventRelation relation, std::size_t first) {
  for (std::size_t next = first; next < marked_.size(); ++next) {
    for (const Condition* condition : marked_[next]->postset) {
      for (Event* consumer : condition->postset) enter(*consumer, relation);
    }
  }
}

std::vector<CoSet> co_sets(const StgPrefix& prefix, std::span<const StgPlace* const> places) {
  assert(!places.empty());
  return CoSetSearch(prefix, places).run();
}

}  // namespace vorel::net
