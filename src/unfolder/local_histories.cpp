#include "unfolder/local_histories.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

namespace vorel::unfolder {

LocalHistories::LocalHistories(const BranchingProcess& process, std::span<const EventId> entered,
                               std::uint32_t most_nodes)
    : process_{process},
      net_{process.net()},
      shared_{number_entries()},
      most_nodes_{most_nodes},
      records_(1) {
  add_initial();
  for (const EventId e : entered) add_batch({&e, 1});
}

// The number of entries.
std::uint32_t LocalHistories::number_entries() {
  entry_.assign(net_.place_count, base::no_index);
  offset_.assign(net_.place_count, 0);
  for (PlaceId p = 0; p < net_.place_count; ++p) {
    if (net_.consumers[p].size() > 1) entry_[p] = choice_count_++;
  }
  std::uint32_t count = choice_count_;
  for (TransitionId t = 0; t < net_.transition_count; ++t) {
    std::uint32_t first = base::no_index;
    for (std::uint32_t k = 0; k < net_.preset[t].size(); ++k) {
      const PlaceId p = net_.preset[t][k];
      if (net_.consumers[p].size() > 1) continue;
      if (first == base::no_index) first = k;
      entry_[p] = count;
      offset_[p] = k - first;
    }
    // Nets with an empty preset are not unfolded.
    if (first != base::no_index) {
      counting_entry_.push_back(count++);
    } else {
      counting_entry_.push_back(net_.preset[t].empty() ? 0 : entry_[net_.preset[t].front()]);
    }
  }
  return count;
}

void LocalHistories::add_initial() {
  behind_none_.assign(net_.place_count, ConditionGroups::empty);
  next_consumer_.assign(1, 0);
  behind_slot_.assign(1, ConditionGroups::empty);
  const auto count = static_cast<ConditionId>(net_.marked.size());
  conditions_.assign(count, {0, 0});
  for (ConditionId c = 0; c < count; ++c) add_to_group(c);
}

void LocalHistories::add_batch(std::span<const EventId> batch) {
  limit_memory();
  histories_.resize(process_.event_count(), given_up);
  first_record_.resize(process_.event_count());
  for (const EventId e : batch) {
    for (const ConditionId c : process_.event(e).preset()) {
      if (history_of(process_.producer(c)) == given_up) restore_history(process_.producer(c));
    }
    add_records(e);
    make_history(e);
    add_conditions(e);
  }
}

void LocalHistories::add_records(EventId e) {
  const UnfoldedEvent& event = process_.event(e);
  const auto places = net_.preset[event.transition];
  const auto first_slot = static_cast<std::uint32_t>(next_consumer_.size());
  next_consumer_.resize(first_slot + places.size());
  behind_slot_.resize(first_slot + places.size(), ConditionGroups::empty);
  first_record_[e] = static_cast<std::uint32_t>(records_.size());
  for (const ConditionId c : event.preset()) {
    const PlaceId place = process_.place(c);
    const auto position = std::ranges::lower_bound(places, place) - places.begin();
    const std::uint32_t slot = first_slot + static_cast<std::uint32_t>(position);
    next_consumer_[slot] = std::exchange(conditions_[c].first_consumer, slot);
    if (offset_[place] != 0) continue;
    const std::uint32_t before = conditions_[c].before;
    Record record{e, entry_[place], slot, records_[before].sum};
    if (counting_entry_[event.transition] == record.entry) {
      record.sum.size += 1;
      record.sum.dummies += net_.is_dummy[event.transition];
      record.sum.state.add(net_.firing_hash[event.transition]);
    }
    records_.push_back(record);
    chains_.append(before);
  }
}

// The histories of its causes are at hand.
void LocalHistories::make_history(EventId e) {
  const std::uint32_t own = shared_.node_count();
  assert(merging_.empty());
  EventId largest = no_event;
  for (const ConditionId c : process_.event(e).preset()) {
    const EventId cause = process_.producer(c);
    if (cause == no_event) continue;
    if (largest == no_event || process_.event(cause).size > process_.event(largest).size) {
      largest = cause;
    }
  }
  History history = history_of(largest);
  causes_.clear();
  for (const ConditionId c : process_.event(e).preset()) {
    const EventId cause = process_.producer(c);
    if (cause != no_event && !contains(history, cause)) causes_.push_back(cause);
  }
  // Records rise with causality.
  if (list_missing(history, causes_, missing_)) {
    for (const EventId missing : missing_) {
      for (std::uint32_t r = first_record_[missing]; records_[r].event == missing; ++r) {
        const std::uint32_t entry = records_[r].entry;
        if (shared_.at(history, entry) < r) shared_.set(history, entry, r, own);
      }
    }
  } else {
    for (const EventId cause : causes_) merging_.push_back(history_of(cause));
    merging_.push_back(history);
    history = shared_.merge(merging_, own, [](std::uint32_t, std::uint32_t a, std::uint32_t b) {
      return std::max(a, b);
    });
  }
  for (std::uint32_t r = first_record_[e]; r < records_.size() && records_[r].event == e; ++r)
    shared_.set(history, records_[r].entry, r, own);
  histories_[e] = history;
  kept_.push_back(e);
}

void LocalHistories::add_conditions(EventId e) {
  const UnfoldedEvent& event = process_.event(e);
  const ConditionId end = event.first_condition + event.postset_size;
  for (ConditionId c = event.first_condition; c < end; ++c) {
    const PlaceId place = process_.place(c);
    const std::uint32_t before = last_at(histories_[e], place);
    conditions_.push_back({histories_[e], before});
    add_to_group(c);
  }
}

bool LocalHistories::are_known(std::span<const EventId> events) const {
  return std::ranges::none_of(events, [this](EventId e) { return history_of(e) == given_up; });
}

// Lists what is in the pasts of the events, but not in a history that none of them is in conflict
// with. False if that is much. Where one has gone a long way alone, and the others a few steps, the
// trees differ in all of that way.
bool LocalHistories::list_missing(History history, std::span<const EventId> events,
                                  std::vector<EventId>& missing) const {
  constexpr std::size_t much = 16;
  missing.clear();
  const auto reach = [&](std::span<const EventId> reached) {
    for (const EventId e : reached) {
      if (missing.size() > much) return;
      if (!contains(history, e) && std::ranges::find(missing, e) == missing.end())
        missing.push_back(e);
    }
  };
  reach(events);
  for (std::size_t i = 0; i < missing.size() && missing.size() <= much; ++i) {
    reach(process_.origin(missing[i]).causes());
  }
  return missing.size() <= much;
}

LocalHistories::Sum LocalHistories::added_to_first(std::span<const EventId> events,
                                                   std::vector<std::uint32_t>& scratch) const {
  Sum sum;
  const History first = history_of(events.front());
  if (list_missing(first, events.subspan(1), scratch)) {
    for (const EventId e : scratch) {
      const TransitionId t = process_.origin(e).transition();
      sum.size += 1;
      sum.dummies += net_.is_dummy[t];
      sum.state.add(net_.firing_hash[t]);
    }
    return sum;
  }
  scratch.clear();
  for (const EventId e : events.subspan(1)) {
    if (!contains(first, e)) scratch.push_back(history_of(e));
  }
  shared_.visit_larger(first, scratch, [&](std::uint32_t own, std::uint32_t last) {
    const Sum& with = records_[last].sum;
    const Sum& without = records_[own].sum;
    sum.size += with.size - without.size;
    sum.dummies += with.dummies - without.dummies;
    sum.state.tokens += with.state.tokens - without.state.tokens;
    sum.state.parity ^= with.state.parity ^ without.state.parity;
  });
  return sum;
}

ConditionGroups::Side LocalHistories::side(History history, const Fork& fork) const {
  const std::uint32_t last = shared_.at(history, fork.entry);
  if (last == 0) return ConditionGroups::undecided;
  const std::uint32_t depth = chains_.depth(fork.above);
  if (chains_.depth(last) <= depth) {
    return chains_.is_on_way(last, fork.above) ? ConditionGroups::undecided
                                               : ConditionGroups::passed_by;
  }
  const std::uint32_t next = chains_.at_depth(last, depth + 1);
  return chains_.before(next) == fork.above ? next : ConditionGroups::passed_by;
}

std::optional<LocalHistories::Fork> LocalHistories::find_fork(History a, History b) const {
  std::uint32_t conflict = 0;
  if (a == given_up || b == given_up || agree(a, b, conflict)) return std::nullopt;
  return Fork{conflict, chains_.parting(shared_.at(a, conflict), shared_.at(b, conflict))};
}

struct LocalHistories::GroupMembers {
  LocalHistories& histories;

  ConditionId& next(ConditionId c) const { return histories.conditions_[c].next; }
  ConditionGroups::Side side(ConditionId c, const Fork& fork) const {
    const History history = histories.conditions_[c].history;
    return history == given_up ? ConditionGroups::undecided : histories.side(history, fork);
  }
  std::optional<Fork> find_fork(ConditionId c, ConditionId d) const {
    return histories.find_fork(histories.conditions_[c].history, histories.conditions_[d].history);
  }
};

void LocalHistories::add_to_group(ConditionId c) {
  const std::uint32_t before = conditions_[c].before;
  const PlaceId place = process_.place(c);
  ConditionGroups::Group& group =
      before == 0 ? behind_none_[place] : behind_slot_[records_[before].slot + offset_[place]];
  groups_.add(group, c, GroupMembers{*this});
}

// The past of d, which is not in conflict with that of c, has gone further at the place of c.
bool LocalHistories::is_consumed_by(ConditionId c, ConditionId d) const {
  return last_at(conditions_[d].history, process_.place(c)) > conditions_[c].before;
}

// With all in its past that was given up: most of that is the past of others that will be asked
// for.
void LocalHistories::restore_history(EventId e) {
  const std::uint32_t node_count = shared_.node_count();
  lost_.assign(1, e);
  for (std::size_t i = 0; i < lost_.size(); ++i) {
    for (const ConditionId c : process_.event(lost_[i]).preset()) {
      const EventId cause = process_.producer(c);
      if (history_of(cause) != given_up) continue;
      histories_[cause] = awaited;
      lost_.push_back(cause);
    }
  }
  std::ranges::sort(lost_, {}, [this](EventId lost) { return process_.event(lost).size; });
  for (const EventId lost : lost_) {
    make_history(lost);
    const UnfoldedEvent& event = process_.event(lost);
    for (std::uint32_t k = 0; k < event.postset_size; ++k)
      conditions_[event.first_condition + k].history = histories_[lost];
  }
  restored_nodes_ += shared_.node_count() - node_count;
}

void LocalHistories::limit_memory() {
  if (shared_.node_count() <= most_nodes_) return;
  if (restored_nodes_ > most_nodes_ / 8) {
    most_nodes_ = std::max(most_nodes_, shared_.node_count());
    most_nodes_ += std::min(most_nodes_, std::numeric_limits<std::uint32_t>::max() - most_nodes_);
  } else {
    give_up_oldest();
  }
  restored_nodes_ = 0;
}

void LocalHistories::give_up_oldest() {
  const base::SharedArrays old = std::exchange(shared_, base::SharedArrays(shared_.length()));
  base::SharedArrayMover mover(old, shared_);
  auto first_kept = kept_.size();
  while (first_kept > 0 && shared_.node_count() < most_nodes_ / 2) {
    History& history = histories_[kept_[--first_kept]];
    history = mover.move(history);
  }
  for (std::size_t i = 0; i < first_kept; ++i) histories_[kept_[i]] = given_up;
  for (ConditionId c = 0; c < conditions_.size(); ++c) {
    conditions_[c].history = history_of(process_.producer(c));
  }
  kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(first_kept));
}

}  // namespace vorel::unfolder
