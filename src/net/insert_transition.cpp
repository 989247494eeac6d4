#include "net/insert_transition.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <utility>

#include "base/indexed_by.h"
#include "net/edit.h"
#include "net/event_relations.h"
#include "net/general_occurrences.h"

namespace vorel::net {
namespace {

using Condition = StgPrefix::Condition;
using Event = StgPrefix::Event;

std::string place_name(const StgTransition& from, const StgTransition& to) {
  return "<" + from.name + "," + to.name + ">";
}

// Enters the link of a prefix under edit, where no condition has a producer already.
void link(Event& event, Condition& condition) {
  [[maybe_unused]] const bool is_first = add_link(event, condition);
  assert(is_first && "a condition has one producer");
}

class TransitionInsertion {
 public:
  TransitionInsertion(StgPrefix& prefix, Signal& signal, Sign sign)
      : prefix_{prefix}, added_{add_transition(prefix, signal, sign)} {}

  StgTransition& added() { return added_; }

  void run(const SeqBefore& insertion) {
    StgTransition& target = *prefix_.transitions[insertion.target->index];
    assert(!insertion.places.empty());
    // Places that nobody else consumes from: all consumers are events of the target.
    const std::vector<CoSet> instances = co_sets(prefix_, insertion.places);
    std::vector<std::vector<Event*>> waiting;
    for (const CoSet& instance : instances) waiting.push_back(common_consumers(instance));

    StgPlace& between = add_place(prefix_, place_name(added_, target), false);
    for (const StgPlace* const_place : insertion.places) {
      StgPlace& place = *prefix_.places[const_place->index];
      assert(place.postset.size() == 1 && place.postset.front() == &target);
      remove_arc(prefix_, place, target);
      add_arc(place, added_);
    }
    add_arc(added_, between);
    add_arc(between, target);

    for (std::size_t i = 0; i < instances.size(); ++i) {
      Event& event = add_event(prefix_, added_);
      for (Condition* condition : instances[i]) add_link(*condition, event);
      Condition& token = produce(event, between);
      for (Event* consumer : waiting[i]) add_link(token, *consumer);
    }
  }

  void run(const SeqAfter& insertion) {
    StgTransition& source = *prefix_.transitions[insertion.source->index];
    assert(!insertion.places.empty());
    base::MarkSet<StgPlace> is_moved(prefix_.places.size());
    for (const StgPlace* place : insertion.places) is_moved.insert(*place);
    std::vector<std::pair<Event*, std::vector<Condition*>>> instances;
    for (Event* event : events_of(source)) {
      auto& moved = instances.emplace_back(event, std::vector<Condition*>{}).second;
      std::ranges::copy_if(event->postset, std::back_inserter(moved),
                           [&is_moved](const auto* c) { return is_moved.contains(*c->place); });
    }

    StgPlace& between = add_place(prefix_, place_name(source, added_), false);
    for (const StgPlace* const_place : insertion.places) {
      StgPlace& place = *prefix_.places[const_place->index];
      remove_arc(prefix_, source, place);
      add_arc(added_, place);
    }
    add_arc(source, between);
    add_arc(between, added_);

    for (const auto& [event, moved] : instances) {
      Event* const next = trigger(produce(*event, between));
      for (Condition* condition : moved) {
        if (next != nullptr) {
          link(*next, *condition);
        } else {
          assert(condition->postset.empty() && "nothing lies after a cut-off");
          remove_condition(*condition);
        }
      }
    }
  }

  void run(const Concurrent& insertion) {
    run(General{{insertion.source}, {insertion.marked}, {insertion.target}});
  }

  void run(const General& insertion) {
    const std::vector<GeneralOccurrence> occurrences = general_occurrences(prefix_, insertion);
    std::vector<Tokens> sources;
    for (std::size_t i = 0; i < insertion.sources.size(); ++i) {
      sources.push_back(give_tokens(*insertion.sources[i], insertion.starred[i]));
    }
    std::vector<StgPlace*> after;
    for (const StgTransition* const_target : insertion.targets) {
      StgTransition& target = *prefix_.transitions[const_target->index];
      after.push_back(&add_place(prefix_, place_name(added_, target), false));
      add_arc(added_, *after.back());
      add_arc(*after.back(), target);
    }
    for (const GeneralOccurrence& occurrence : occurrences) {
      Event& event = add_event(prefix_, added_);
      for (std::size_t i = 0; i < sources.size(); ++i) {
        const Event* const source = occurrence.sources[i];
        add_link(source == nullptr ? *sources[i].initial : *sources[i].after[*source], event);
      }
      for (StgPlace* place : after) {
        Condition& token = produce(event, *place);
        for (Event* follower : occurrence.followers) {
          if (follower->transition == place->postset.front()) add_link(token, *follower);
        }
      }
    }
  }

 private:
  std::vector<Event*> events_of(const StgTransition& transition) const {
    std::vector<Event*> events;
    for (const auto& event : prefix_.events) {
      if (event->transition == &transition) events.push_back(event.get());
    }
    return events;
  }

  static std::vector<Event*> common_consumers(const CoSet& conditions) {
    std::vector<Event*> consumers;
    const auto consumes = [](const Event* event, const Condition* condition) {
      return std::ranges::find(event->preset, condition) != event->preset.end();
    };
    for (Event* event : conditions.front()->postset) {
      const bool takes_all = std::ranges::all_of(
          conditions, [&](const Condition* condition) { return consumes(event, condition); });
      if (takes_all) consumers.push_back(event);
    }
    return consumers;
  }

  Condition& produce(Event& event, StgPlace& place) {
    Condition& condition = add_condition(prefix_, place);
    link(event, condition);
    return condition;
  }

  // A new event that consumes the condition; null after a cut-off.
  Event* trigger(Condition& condition) {
    if (!condition.is_initial() && condition.pre_event->is_cut_off()) return nullptr;
    Event& event = add_event(prefix_, added_);
    add_link(condition, event);
    return &event;
  }

  // On a new place between a source and the new transition.
  struct Tokens {
    Condition* initial = nullptr;
    base::IndexedBy<Event, Condition*> after;
  };
  Tokens give_tokens(const StgTransition& const_source, bool is_starred) {
    StgTransition& source = *prefix_.transitions[const_source.index];
    StgPlace& place = add_place(prefix_, place_name(source, added_), is_starred);
    Tokens tokens{is_starred ? prefix_.conditions.back().get() : nullptr,
                  base::IndexedBy<Event, Condition*>(prefix_.events.size())};
    add_arc(source, place);
    add_arc(place, added_);
    for (Event* event : events_of(source)) tokens.after[*event] = &produce(*event, place);
    return tokens;
  }

  StgPrefix& prefix_;
  StgTransition& added_;
};

}  // namespace

StgTransition& insert_transition(StgPrefix& prefix, const Insertion& insertion, Signal& signal,
                                 Sign sign) {
  TransitionInsertion edit(prefix, signal, sign);
  std::visit([&edit](const auto& kind) { edit.run(kind); }, insertion);
  return edit.added();
}

}  // namespace vorel::net
