#include "unfolder/co_set_finder.h"

#include <algorithm>
#include <cassert>

namespace vorel::unfolder {

CoSetFinder::CoSetFinder(const BranchingProcess& process, Found found,
                         std::function<bool()> must_stop)
    : process_{process},
      net_{process.net()},
      found_{std::move(found)},
      must_stop_{std::move(must_stop)},
      past_{process},
      older_(net_.place_count),
      listed_(net_.place_count) {}

void CoSetFinder::run(EventId e, const ConcurrencyRelation* relation) {
  ++round_;
  unsafe_.reset();
  event_ = e;
  relation_ = relation;
  if (e == no_event) {
    first_ = 0;
    end_ = static_cast<ConditionId>(net_.marked.size());
  } else {
    assert(process_.event(e).correspondent == not_cut_off && "cut-offs have no successors");
    first_ = process_.event(e).first_condition;
    assert(first_ != no_condition && "the event is in the prefix");
    end_ = first_ + process_.event(e).postset_size;
  }
  if (first_ == end_) return;
  if (relation != nullptr) {
    list_all_candidates();
  } else {
    past_.start(e);
  }
  for (ConditionId newest = first_; newest < end_; ++newest) {
    check_safety(newest);
    for (const TransitionId t : net_.consumers[process_.place(newest)]) {
      if (must_stop_()) return;
      complete(t, newest);
    }
  }
}

// All new conditions of an event are concurrent with the same older ones.
void CoSetFinder::list_all_candidates() {
  ConcurrencyRelation::for_each(relation_->row(first_), [this](ConditionId c) {
    if (c >= first_) return;
    const PlaceId place = process_.place(c);
    if (listed_[place] != round_) older_[place].clear();
    listed_[place] = round_;
    older_[place].push_back(c);
  });
}

void CoSetFinder::list_candidates(PlaceId place) {
  List& list = older_[place];
  list.clear();
  if (relation_ != nullptr) return;  // what there is has been listed
  for (const ConditionId c : process_.conditions_of(place)) {
    if (c >= first_) break;
    if (past_.fits(c)) list.push_back(c);
  }
}

const CoSetFinder::List& CoSetFinder::older_candidates(PlaceId place) {
  if (listed_[place] != round_) list_candidates(place);
  listed_[place] = round_;
  return older_[place];
}

// The new condition of the place below the newest one, or no_condition: a place has at most one.
ConditionId CoSetFinder::sibling_of(ConditionId newest, PlaceId place) const {
  for (ConditionId sibling = first_; sibling < newest; ++sibling) {
    if (process_.place(sibling) == place) return sibling;
  }
  return no_condition;
}

void CoSetFinder::check_safety(ConditionId newest) {
  if (unsafe_) return;
  const List& rivals = older_candidates(process_.place(newest));
  assert(std::ranges::all_of(rivals, [this](ConditionId c) { return c < first_; }));
  if (!rivals.empty()) unsafe_ = {newest, rivals.front()};
}

void CoSetFinder::complete(TransitionId t, ConditionId newest) {
  const auto preset = net_.preset[t];
  const PlaceId own = process_.place(newest);
  assert(std::ranges::find(preset, own) != preset.end() && "the transition consumes from it");
  transition_ = t;
  chosen_.assign(1, newest);
  if (preset.size() == 1) return report(no_condition);
  for (const PlaceId place : preset) {
    if (place == own || !older_candidates(place).empty()) continue;
    if (sibling_of(newest, place) == no_condition) return;
  }
  if (preset.size() == 2) return complete_pair(preset[0] == own ? preset[1] : preset[0]);
  if (open_.size() < preset.size()) open_.resize(preset.size());
  auto& open = open_.front();
  open.resize(preset.size() - 1);
  std::size_t next = 0;
  for (const PlaceId place : preset) {
    if (place == own) continue;
    List& list = open[next++];
    list = older_candidates(place);
    if (const ConditionId c = sibling_of(newest, place); c != no_condition) list.push_back(c);
  }
  choose(0);
}

// One more place to choose for: most presets are pairs.
void CoSetFinder::complete_pair(PlaceId place) {
  for (const ConditionId c : older_candidates(place)) report(c);
  if (const ConditionId c = sibling_of(chosen_.front(), place); c != no_condition) report(c);
}

// Chooses a condition for one of the places that are open at this depth, then the rest.
void CoSetFinder::choose(std::size_t depth) {
  auto& open = open_[depth];
  assert(!open.empty() && chosen_.size() + open.size() == net_.preset[transition_].size());
  if (open.size() == 1) {
    for (const ConditionId last : open.front()) report(last);
    return;
  }
  const auto fewest = std::ranges::min_element(open, {}, &List::size);
  std::swap(*fewest, open.back());
  for (const ConditionId candidate : open.back()) {
    if (must_stop_()) return;
    chosen_.push_back(candidate);
    const bool is_new = candidate >= first_;  // then the candidates have been tested against it
    if (!is_new && relation_ == nullptr) past_.push(candidate);
    if (narrow(depth, candidate)) choose(depth + 1);
    if (!is_new && relation_ == nullptr) past_.pop();
    chosen_.pop_back();
  }
}

// Leaves at the next depth what is concurrent with the choice; false when a place has nothing left.
bool CoSetFinder::narrow(std::size_t depth, ConditionId chosen) {
  const auto& open = open_[depth];
  auto& next = open_[depth + 1];
  next.resize(open.size() - 1);
  for (std::size_t i = 0; i + 1 < open.size(); ++i) {
    next[i].clear();
    for (const ConditionId other : open[i]) {
      if (concurrent(chosen, other)) next[i].push_back(other);
    }
    if (next[i].empty()) return false;
  }
  return true;
}

bool CoSetFinder::concurrent(ConditionId chosen, ConditionId other) {
  if (chosen >= first_ || other >= first_) return true;
  return relation_ != nullptr ? relation_->concurrent(chosen, other) : past_.fits(other);
}

// The choice so far, with a last condition unless that is no_condition.
void CoSetFinder::report(ConditionId last) {
  sorted_ = chosen_;
  if (last != no_condition) sorted_.push_back(last);
  assert(sorted_.size() == net_.preset[transition_].size());
  std::ranges::sort(sorted_);
  assert(std::ranges::adjacent_find(sorted_) == sorted_.end() && "no condition is chosen twice");
  found_(transition_, sorted_);
}

}  // namespace vorel::unfolder
