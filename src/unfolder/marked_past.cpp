#include "unfolder/marked_past.h"

#include <cassert>

namespace vorel::unfolder {

void MarkedPast::start(EventId e) {
  // Twice what is needed: the vectors grow rarely.
  if (in_past_.size() < process_.event_count()) {
    in_past_.resize(std::size_t{2} * process_.event_count());
    verdict_.resize(in_past_.size());
  }
  if (consumed_.size() < process_.condition_count()) {
    consumed_.resize(std::size_t{2} * process_.condition_count());
  }
  ++round_;
  events_.clear();
  conditions_.clear();
  levels_.clear();
  begin_choice();
  if (e != no_event) add_past(e);
}

void MarkedPast::push(ConditionId c) {
  assert(consumed_[c] != round_ && "what is chosen fits to the choice before");
  levels_.push_back({events_.size(), conditions_.size()});
  begin_choice();
  if (process_.producer(c) != no_event) add_past(process_.producer(c));
  consume(c);  // whoever consumes it later does not fit
}

void MarkedPast::pop() {
  assert(!levels_.empty());
  for (; events_.size() > levels_.back().events; events_.pop_back()) in_past_[events_.back()] = 0;
  for (; conditions_.size() > levels_.back().conditions; conditions_.pop_back()) {
    consumed_[conditions_.back()] = 0;
  }
  levels_.pop_back();
  begin_choice();
}

void MarkedPast::begin_choice() { ++choice_; }

void MarkedPast::consume(ConditionId c) {
  if (consumed_[c] == round_) return;
  consumed_[c] = round_;
  conditions_.push_back(c);
}

void MarkedPast::add_past(EventId e) {
  const auto add = [this](EventId event) {
    if (in_past_[event] == round_) return;
    in_past_[event] = round_;
    events_.push_back(event);
    walk_.push_back(event);
  };
  assert(walk_.empty());
  add(e);
  while (!walk_.empty()) {
    const UnfoldedEvent& event = process_.event(walk_.back());
    walk_.pop_back();
    for (const ConditionId c : event.preset()) {
      consume(c);
      if (process_.producer(c) != no_event) add(process_.producer(c));
    }
  }
}

bool MarkedPast::fits(ConditionId c) {
  if (consumed_[c] == round_) return false;
  const EventId producer = process_.producer(c);
  return producer == no_event || past_fits(producer);
}

// Depth first through the past, with a stack of its own: pasts can be long chains.
bool MarkedPast::past_fits(EventId e) {
  if (in_past_[e] == round_) return true;
  if (verdict_[e] / 2 == choice_) return verdict_[e] % 2 == 1;
  assert(walk_.empty());
  walk_.push_back(e);
  while (!walk_.empty()) {
    const EventId top = walk_.back();
    bool fits = true;
    const EventId unknown = unknown_cause(top, fits);
    if (fits && unknown != no_event) {
      walk_.push_back(unknown);
      continue;
    }
    verdict_[top] = 2 * choice_ + (fits ? 1 : 0);
    walk_.pop_back();
  }
  assert(verdict_[e] / 2 == choice_ && "it was judged for this choice");
  return verdict_[e] % 2 == 1;
}

EventId MarkedPast::unknown_cause(EventId e, bool& fits) const {
  EventId unknown = no_event;
  for (const ConditionId c : process_.event(e).preset()) {
    if (consumed_[c] == round_) {
      fits = false;
      return no_event;
    }
    const EventId producer = process_.producer(c);
    if (producer == no_event || in_past_[producer] == round_) continue;
    if (verdict_[producer] / 2 != choice_) {
      unknown = producer;
    } else if (verdict_[producer] % 2 == 0) {
      fits = false;
      return no_event;
    }
  }
  return unknown;
}

}  // namespace vorel::unfolder
