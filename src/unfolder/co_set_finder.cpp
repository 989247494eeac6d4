#include "unfolder/co_set_finder.h"

#include <algorithm>
#include <cassert>

namespace vorel::unfolder {
namespace {

// Beyond, all that is chosen is compared with a candidate at once, instead of pair by pair.
constexpr std::size_t wide_preset = 16;

}  // namespace

CoSetFinder::CoSetFinder(const BranchingProcess& process, Found found,
                         std::function<bool()> must_stop)
    : process_{process},
      net_{process.net()},
      found_{std::move(found)},
      must_stop_{std::move(must_stop)},
      past_{process},
      other_past_{process},
      older_(net_.place_count),
      listed_(net_.place_count),
      newest_at_(net_.place_count, no_condition),
      last_gap_(net_.transition_count) {}

void CoSetFinder::run(EventId e, const ConcurrencyRelation* relation,
                      const LocalHistories* histories) {
  assert((relation == nullptr) != (histories == nullptr));
  ++round_;
  unsafe_.reset();
  event_ = e;
  relation_ = relation;
  histories_ = histories;
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
  is_marked_ = false;
  if (relation != nullptr) list_all_candidates();
  for (ConditionId c = first_; c < end_; ++c) newest_at_[process_.place(c)] = c;
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
  const auto all = process_.conditions_of(place);
  if (all.empty() || all.front() >= first_) return;
  histories_->list_candidates(
      event_, place, first_, [this](ConditionId c) { return !must_stop_() && fits(c); }, list,
      groups_);
}

bool CoSetFinder::fits(ConditionId older) {
  if (histories_->is_known(older)) return histories_->in_harmony(older, event_, conflict_);
  mark_past();
  return past_.fits(older);
}

bool CoSetFinder::are_concurrent(ConditionId c, ConditionId d) {
  if (relation_ != nullptr) return relation_->concurrent(c, d);
  if (histories_->is_known(c) && histories_->is_known(d))
    return histories_->are_concurrent(c, d, conflict_);
  other_past_.start(no_event);
  other_past_.push(c);
  return other_past_.fits(d);
}

// Most events find nothing that would have to fit.
void CoSetFinder::mark_past() {
  if (!is_marked_) past_.start(event_);
  is_marked_ = true;
}

const CoSetFinder::List& CoSetFinder::older_candidates(PlaceId place) {
  if (listed_[place] != round_) list_candidates(place);
  listed_[place] = round_;
  return older_[place];
}

// The new condition of the place below the newest one, or no_condition: a place has at most one.
ConditionId CoSetFinder::sibling_of(ConditionId newest, PlaceId place) const {
  const ConditionId sibling = newest_at_[place];
  return sibling >= first_ && sibling < newest ? sibling : no_condition;
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
  if (!has_candidates(t, newest)) return;
  if (preset.size() == 2) return complete_pair(preset[0] == own ? preset[1] : preset[0]);
  is_wide_ = preset.size() > wide_preset;
  if (open_.empty()) open_.resize(1);
  auto& open = open_.front();
  open.resize(preset.size() - 1);
  std::size_t next = 0;
  for (const PlaceId place : preset) {
    if (place == own) continue;
    List& list = open[next++];
    list = older_candidates(place);
    if (const ConditionId c = sibling_of(newest, place); c != no_condition) list.push_back(c);
  }
  if (is_wide_ && !choose_forced()) {
    unchoose(1);
    return;
  }
  if (open_.size() <= open.size()) open_.resize(open.size() + 1);
  open_.front().empty() ? report(no_condition) : choose(0);
  unchoose(1);
}

// True when each other place of the preset has a condition that is concurrent with the newest one.
bool CoSetFinder::has_candidates(TransitionId t, ConditionId newest) {
  const auto preset = net_.preset[t];
  const PlaceId own = process_.place(newest);
  auto position = last_gap_[t];
  assert(position < preset.size());
  for (std::size_t i = 0; i < preset.size(); ++i) {
    const PlaceId place = preset[position];
    if (place != own && older_candidates(place).empty() &&
        sibling_of(newest, place) == no_condition) {
      last_gap_[t] = position;
      return false;
    }
    if (++position == preset.size()) position = 0;
  }
  return true;
}

// One more place to choose for: most presets are pairs.
void CoSetFinder::complete_pair(PlaceId place) {
  for (const ConditionId c : older_candidates(place)) report(c);
  if (const ConditionId c = sibling_of(chosen_.front(), place); c != no_condition) report(c);
}

// Places with a single candidate leave no choice: of a wide preset they are settled first, in one
// pass over the past of all. Leaves of the others what is concurrent with them, and is false when
// a place has nothing left.
bool CoSetFinder::choose_forced() {
  mark_past();
  auto& open = open_.front();
  const auto forced =
      std::ranges::partition(open, [](const List& list) { return list.size() > 1; });
  for (const List& list : forced) {
    if (must_stop_() || !concurrent(chosen_.back(), list.front())) return false;
    choose_condition(list.front());
  }
  open.resize(open.size() - forced.size());
  for (List& list : open) {
    std::erase_if(list, [this](ConditionId c) { return !concurrent(chosen_.back(), c); });
    if (list.empty()) return false;
  }
  return true;
}

void CoSetFinder::choose_condition(ConditionId c) {
  chosen_.push_back(c);
  // What is new has been tested against all candidates.
  if (is_wide_ && c < first_) past_.push(c);
}

// Takes choices back until there are `size`.
void CoSetFinder::unchoose(std::size_t size) {
  for (; chosen_.size() > size; chosen_.pop_back()) {
    if (is_wide_ && chosen_.back() < first_) past_.pop();
  }
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
    choose_condition(candidate);
    if (narrow(depth)) choose(depth + 1);
    unchoose(chosen_.size() - 1);
  }
}

// Leaves at the next depth what is concurrent with the choice; false when a place has nothing left.
bool CoSetFinder::narrow(std::size_t depth) {
  const auto& open = open_[depth];
  auto& next = open_[depth + 1];
  next.resize(open.size() - 1);
  for (std::size_t i = 0; i + 1 < open.size(); ++i) {
    next[i].clear();
    for (const ConditionId other : open[i]) {
      if (concurrent(chosen_.back(), other)) next[i].push_back(other);
    }
    if (next[i].empty()) return false;
  }
  return true;
}

// With the last choice; marks answer for all choices.
bool CoSetFinder::concurrent(ConditionId chosen, ConditionId other) {
  if (other >= first_) return true;
  if (is_wide_) return past_.fits(other);
  return chosen >= first_ || are_concurrent(chosen, other);
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
