#include "resolution/event_copies.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "base/indexed_by.h"
#include "base/sort_unique.h"
#include "net/causality.h"
#include "net/event_relations.h"

namespace vorel::resolution {
namespace {

using net::EventRelation;
using net::StgPrefix;
using Condition = StgPrefix::Condition;
using Event = StgPrefix::Event;
using Copies = std::vector<std::uint32_t>;

// What an event of the target waits for.
struct Token {
  std::uint32_t number = 0;           // of the tokens in a run from 1 on; 0 for one from the start
  std::vector<const Event*> sources;  // neither after the event nor in conflict with it
};

class ReducedOrder {
 public:
  ReducedOrder(const StgPrefix& prefix, const Reduction& reduction)
      : prefix_{prefix},
        reduction_{reduction},
        is_source_(prefix.transitions.size()),
        waits_for_(prefix.events.size()),
        copies_of_(prefix.events.size()),
        consumer_(prefix.conditions.size()) {
    for (const net::StgTransition* source : reduction.sources) is_source_.insert(*source);
  }

  EventCopies run() && {
    find_tokens();
    for (const Event* event : order_with_tokens()) make_copies(*event);
    return std::move(result_);
  }

 private:
  // Of a copy.
  struct Past {
    bool is_changed = false;    // it has events that are no causes in the prefix
    std::uint32_t sources = 0;  // events of the sources: ordered, as the new place is safe
    // Copies are in conflict by those of their causes, themselves included, that consume what
    // another event consumes, too. These are the last of them; they lead back to the others.
    Copies choices;
  };
  struct Consumer {
    std::uint32_t copy = 0, round = 0;
  };

  bool is_target(const Event& event) const { return event.transition == reduction_.target; }

  void find_tokens() {
    std::vector<const Event*> sources, targets;
    for (const auto& event : prefix_.events) {
      if (is_source_.contains(*event->transition)) sources.push_back(event.get());
      if (is_target(*event)) targets.push_back(event.get());
    }
    net::EventRelations relations(prefix_);
    for (const Event* event : targets) {
      relations.choose(*event);
      const auto is_cause = [&](const Event* e) {
        return relations.relation_of(*e) == EventRelation::cause;
      };
      Token& token = waits_for_[*event];
      const auto before = static_cast<std::uint32_t>(std::ranges::count_if(targets, is_cause));
      token.number = before + (reduction_.marked ? 0 : 1);
      if (token.number == 0) continue;
      std::ranges::copy_if(sources, std::back_inserter(token.sources), [&](const Event* source) {
        return is_cause(source) || relations.relation_of(*source) == EventRelation::concurrent;
      });
    }
  }

  // All events, each after its causes and after those that may give it its token. There is such an
  // order: else there were events e1, e2, ... of the target in a circle, each waiting for an event
  // after the next one. Events of a transition that can both happen are ordered, so that each would
  // come later than the next one.
  std::vector<const Event*> order_with_tokens() const {
    base::IndexedBy<Event, std::uint32_t> missing(prefix_.events.size());
    base::IndexedBy<Event, std::vector<const Event*>> gives_to(prefix_.events.size());
    std::vector<const Event*> order;
    for (const auto& event : prefix_.events) {
      const auto& sources = waits_for_[*event].sources;
      for (const Event* source : sources) gives_to[*source].push_back(event.get());
      missing[*event] = static_cast<std::uint32_t>(sources.size());
      for (const Condition* condition : event->preset) {
        if (!condition->is_initial()) ++missing[*event];
      }
      if (missing[*event] == 0) order.push_back(event.get());
    }
    const auto release = [&](const Event* event) {
      if (--missing[*event] == 0) order.push_back(event);
    };
    for (std::size_t next = 0; next < order.size(); ++next) {
      const Event& event = *order[next];
      for (const Condition* condition : event.postset)
        std::ranges::for_each(condition->postset, release);
      std::ranges::for_each(gives_to[event], release);
    }
    assert(order.size() == prefix_.events.size());
    return order;
  }

  void make_copies(const Event& event) {
    std::vector<Copies> choices;
    std::vector<const Event*> producers;
    for (const Condition* condition : event.preset) {
      if (condition->is_initial() || std::ranges::count(producers, condition->pre_event) != 0)
        continue;
      producers.push_back(condition->pre_event);
      choices.push_back(copies_of_[*condition->pre_event]);
    }
    const Token& token = waits_for_[event];
    if (is_target(event) && token.number > 0) {
      Copies& givers = choices.emplace_back();
      for (const Event* source : token.sources) {
        for (const std::uint32_t copy : copies_of_[*source]) {
          if (past_[copy].sources == token.number) givers.push_back(copy);
        }
      }
    }
    chosen_.clear();
    choose(event, choices);
  }

  // Takes one of each list, such that all of them can happen together, and then the event.
  void choose(const Event& event, std::span<const Copies> choices) {
    if (!can_happen_before(event)) return;
    if (choices.empty()) {
      add_copy(event);
      return;
    }
    for (const std::uint32_t copy : choices.front()) {
      chosen_.push_back(copy);
      choose(event, choices.subspan(1));
      chosen_.pop_back();
    }
  }

  void add_copy(const Event& event) {
    const std::uint32_t copy = result_.add(event, chosen_);
    copies_of_[event].push_back(copy);
    Past past{waits_for_[event].number > 0 || is_changed(), 0, {}};
    for (const std::uint32_t cause : chosen_)
      past.sources = std::max(past.sources, past_[cause].sources);
    if (is_source_.contains(*event.transition)) ++past.sources;
    const bool is_choice = std::ranges::any_of(event.preset, is_shared);
    past.choices = choices_before(copy);
    earlier_choices_.emplace_back();
    if (is_choice) earlier_choices_[copy] = std::exchange(past.choices, {copy});
    past_.push_back(std::move(past));
    seen_.push_back(0);
  }

  static bool is_shared(const Condition* condition) { return condition->postset.size() > 1; }

  Copies choices_before(std::uint32_t copy) const {
    Copies choices;
    for (const std::uint32_t cause : result_.causes(copy)) {
      const Copies& more = past_[cause].choices;
      choices.insert(choices.end(), more.begin(), more.end());
    }
    base::sort_unique(choices);
    return choices;
  }

  bool is_changed() const {
    return std::ranges::any_of(chosen_, [this](auto copy) { return past_[copy].is_changed; });
  }

  // Whether the chosen copies can happen together and leave what the event consumes. It is so where
  // they have their old pasts: they produce for the event, or are not in conflict with it.
  bool can_happen_before(const Event& event) {
    if (!is_changed()) return true;
    collect_choices();
    for (const std::uint32_t copy : found_) {
      for (const Condition* condition : result_.event(copy).preset) {
        if (!is_shared(condition)) continue;
        Consumer& consumer = consumer_[*condition];
        if (consumer.round == round_ && consumer.copy != copy) return false;
        consumer = {copy, round_};
      }
    }
    return std::ranges::none_of(event.preset, [this](const Condition* condition) {
      return consumer_[*condition].round == round_;
    });
  }

  // found_ = all choices in the pasts of the chosen copies.
  void collect_choices() {
    ++round_;
    found_.clear();
    const auto visit = [this](std::uint32_t copy) {
      if (std::exchange(seen_[copy], round_) != round_) found_.push_back(copy);
    };
    for (const std::uint32_t copy : chosen_) std::ranges::for_each(past_[copy].choices, visit);
    for (std::size_t next = 0; next < found_.size(); ++next) {
      std::ranges::for_each(earlier_choices_[found_[next]], visit);
    }
  }

  const StgPrefix& prefix_;
  const Reduction& reduction_;
  base::MarkSet<net::StgTransition> is_source_;
  base::IndexedBy<Event, Token> waits_for_;
  EventCopies result_;
  base::IndexedBy<Event, Copies> copies_of_;
  std::vector<Past> past_;  // by copy
  Copies chosen_;           // the causes of the copy that is being made

  std::vector<Copies> earlier_choices_;  // by copy, of a choice: the last ones before it

  // Scratch of can_happen_before().
  std::uint32_t round_ = 0;
  std::vector<std::uint32_t> seen_;  // by copy
  Copies found_;
  base::IndexedBy<Condition, Consumer> consumer_;
};

}  // namespace

EventCopies event_copies(const StgPrefix& prefix) {
  EventCopies copies;
  base::IndexedBy<Event, std::uint32_t> copy_of(prefix.events.size());
  Copies causes;
  for (const Event* event : net::topological_order(prefix)) {
    causes.clear();
    for (const Condition* condition : event->preset) {
      if (!condition->is_initial()) causes.push_back(copy_of[*condition->pre_event]);
    }
    copy_of[*event] = copies.add(*event, causes);
  }
  return copies;
}

EventCopies event_copies(const StgPrefix& prefix, const Reduction& reduction) {
  return ReducedOrder(prefix, reduction).run();
}

}  // namespace vorel::resolution
