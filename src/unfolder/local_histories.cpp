#include "unfolder/local_histories.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vorel::unfolder {
LocalHistories::LocalHistories(const BranchingProcess& process, std::span<const EventId> entered)
    : process_{process}, net_{process.net()}, records_(1), before_(1) {
  new_node({});
  number_entries();
  add_initial();
  for (const EventId e : entered) add_batch({&e, 1});
}

void LocalHistories::number_entries() {
  entry_.assign(net_.place_count, base::no_index);
  offset_.assign(net_.place_count, 0);
  for (PlaceId p = 0; p < net_.place_count; ++p) {
    if (net_.consumers[p].size() > 1) entry_[p] = choice_count_++;
  }
  entry_count_ = choice_count_;
  for (TransitionId t = 0; t < net_.transition_count; ++t) {
    std::uint32_t first = base::no_index;
    for (std::uint32_t k = 0; k < net_.preset[t].size(); ++k) {
      const PlaceId p = net_.preset[t][k];
      if (net_.consumers[p].size() > 1) continue;
      if (first == base::no_index) first = k;
      entry_[p] = entry_count_;
      offset_[p] = k - first;
    }
    // Nets with an empty preset are not unfolded.
    if (first != base::no_index) {
      counting_entry_.push_back(entry_count_++);
    } else {
      counting_entry_.push_back(net_.preset[t].empty() ? 0 : entry_[net_.preset[t].front()]);
    }
  }
  while (std::uint64_t{top_span_} * fan_out < entry_count_) top_span_ *= fan_out;
}

void LocalHistories::add_initial() {
  first_of_place_.assign(net_.place_count, no_condition);
  next_consumer_.assign(1, 0);
  first_behind_.assign(1, no_condition);
  const auto count = static_cast<ConditionId>(net_.marked.size());
  conditions_.assign(count, {0, 0});
  for (ConditionId c = 0; c < count; ++c) first_of_place_[process_.place(c)] = c;
}

void LocalHistories::add_batch(std::span<const EventId> batch) {
  if (node_count_ > node_limit) give_up_oldest();
  roots_.resize(process_.event_count(), given_up);
  first_record_.resize(process_.event_count());
  for (const EventId e : batch) {
    for (const ConditionId c : process_.event(e).preset()) {
      if (root_of(process_.producer(c)) == given_up) restore_history(process_.producer(c));
    }
    add_records(e);
    add_history(e);
    add_conditions(e);
  }
}

void LocalHistories::add_records(EventId e) {
  const UnfoldedEvent& event = process_.event(e);
  const auto places = net_.preset[event.transition];
  const auto first_slot = static_cast<std::uint32_t>(next_consumer_.size());
  next_consumer_.resize(first_slot + places.size());
  first_behind_.resize(first_slot + places.size(), no_condition);
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
    before_.push_back(before);
  }
}

void LocalHistories::add_history(EventId e) {
  const NodeId own = node_count_;
  assert(merging_.empty());
  for (const ConditionId c : process_.event(e).preset()) {
    merging_.push_back(root_of(process_.producer(c)));
  }
  NodeId root = merge(0, top_span_);
  for (std::uint32_t record = first_record_[e]; record < records_.size(); ++record) {
    set(root, top_span_, records_[record].entry, record, own);
  }
  roots_[e] = root;
  kept_.push_back(e);
}

void LocalHistories::add_conditions(EventId e) {
  const UnfoldedEvent& event = process_.event(e);
  const ConditionId end = event.first_condition + event.postset_size;
  for (ConditionId c = event.first_condition; c < end; ++c) {
    const PlaceId place = process_.place(c);
    const std::uint32_t before = last_at(roots_[e], place);
    ConditionId& first = before == 0 ? first_of_place_[place]
                                     : first_behind_[records_[before].slot + offset_[place]];
    conditions_.push_back({roots_[e], before, std::exchange(first, c)});
  }
}

// Makes one tree of those in merging_ from `first` on, which it takes away: what they agree in is
// shared.
LocalHistories::NodeId LocalHistories::merge(std::size_t first, std::uint32_t span) {
  const auto begin = merging_.begin() + static_cast<std::ptrdiff_t>(first);
  std::sort(begin, merging_.end());
  merging_.erase(std::unique(begin, merging_.end()), merging_.end());
  if (merging_.size() > first && merging_[first] == 0) {
    merging_.erase(merging_.begin() + static_cast<std::ptrdiff_t>(first));
  }
  const std::size_t end = merging_.size();
  if (end == first) return 0;
  NodeId result = merging_[first];
  if (end > first + 1) {
    Node merged{};
    for (std::uint32_t k = 0; k < fan_out; ++k) {
      if (span == 1) {
        for (std::size_t i = first; i < end; ++i) {
          merged[k] = std::max(merged[k], node(merging_[i])[k]);
        }
      } else {
        for (std::size_t i = first; i < end; ++i) merging_.push_back(node(merging_[i])[k]);
        merged[k] = merge(end, span / fan_out);
      }
    }
    const auto same = std::find_if(merging_.begin() + static_cast<std::ptrdiff_t>(first),
                                   merging_.begin() + static_cast<std::ptrdiff_t>(end),
                                   [&](NodeId id) { return node(id) == merged; });
    if (same != merging_.begin() + static_cast<std::ptrdiff_t>(end)) {
      result = *same;
    } else {
      result = new_node(merged);
    }
  }
  merging_.resize(first);
  return result;
}

// Nodes from `own` on belong to this tree alone, the others are copied before they change.
void LocalHistories::set(NodeId& id, std::uint32_t span, std::uint32_t entry, std::uint32_t record,
                         NodeId own) {
  if (id < own) id = new_node(node(id));
  const std::uint32_t child = entry / span;
  assert(child < fan_out);
  if (span == 1) {
    node(id)[child] = record;
    return;
  }
  NodeId below = node(id)[child];
  set(below, span / fan_out, entry % span, record, own);
  node(id)[child] = below;
}

LocalHistories::NodeId LocalHistories::new_node(const Node& content) {
  if (node_count_ % chunk_size == 0) {
    node_chunks_.push_back(std::make_unique_for_overwrite<Node[]>(chunk_size));
  }
  node(node_count_) = content;
  return node_count_++;
}

std::uint32_t LocalHistories::record_at(NodeId root, std::uint32_t entry) const {
  assert(root != given_up && entry < entry_count_);
  std::uint32_t found = root;
  for (std::uint32_t span = top_span_; found != 0; span /= fan_out) {
    found = node(found)[entry / span];
    entry %= span;
    if (span == 1) break;
  }
  return found;
}

bool LocalHistories::are_known(std::span<const EventId> events) const {
  return std::ranges::none_of(events, [this](EventId e) { return root_of(e) == given_up; });
}

LocalHistories::Sum LocalHistories::added_to_first(std::span<const EventId> events,
                                                   std::vector<std::uint32_t>& scratch) const {
  Sum sum;
  scratch.clear();
  for (const EventId e : events.subspan(1)) scratch.push_back(root_of(e));
  add_difference(root_of(events.front()), top_span_, 0, scratch, sum);
  return sum;
}

// Adds what the nodes in `others` from `first` on have and `base` has not, and takes them away.
void LocalHistories::add_difference(NodeId base, std::uint32_t span, std::size_t first,
                                    std::vector<NodeId>& others, Sum& sum) const {
  const auto begin = others.begin() + static_cast<std::ptrdiff_t>(first);
  others.erase(
      std::remove_if(begin, others.end(), [&](NodeId id) { return id == 0 || id == base; }),
      others.end());
  const std::size_t end = others.size();
  for (std::uint32_t k = 0; k < fan_out && first < end; ++k) {
    const std::uint32_t own = node(base)[k];
    if (span > 1) {
      for (std::size_t i = first; i < end; ++i) others.push_back(node(others[i])[k]);
      add_difference(own, span / fan_out, end, others, sum);
      continue;
    }
    std::uint32_t last = own;
    for (std::size_t i = first; i < end; ++i) last = std::max(last, node(others[i])[k]);
    if (last == own) continue;
    const Sum& with = records_[last].sum;
    const Sum& without = records_[own].sum;
    sum.size += with.size - without.size;
    sum.dummies += with.dummies - without.dummies;
    sum.state.tokens += with.state.tokens - without.state.tokens;
    sum.state.parity ^= with.state.parity ^ without.state.parity;
  }
  others.resize(first);
}

// Looks only at entries of places with several consumers.
bool LocalHistories::agree_below(NodeId a, NodeId b, std::uint32_t span, std::uint32_t first_entry,
                                 std::uint32_t& conflict) const {
  assert(a != given_up && b != given_up);
  if (first_entry >= choice_count_) return true;
  const Node& in_a = node(a);
  const Node& in_b = node(b);
  const std::uint32_t end = std::min(fan_out, (choice_count_ - first_entry + span - 1) / span);
  for (std::uint32_t k = 0; k < end; ++k) {
    if (in_a[k] == in_b[k] || in_a[k] == 0 || in_b[k] == 0) continue;
    const std::uint32_t entry = first_entry + k * span;
    if (span > 1) {
      if (!agree_below(in_a[k], in_b[k], span / fan_out, entry, conflict)) return false;
    } else if (!follow(in_a[k], in_b[k])) {
      conflict = entry;
      return false;
    }
  }
  return true;
}

// One of the two records of an entry comes after the other one. Records rise with causality.
bool LocalHistories::follow(std::uint32_t a, std::uint32_t b) const {
  std::uint32_t later = std::max(a, b);
  const std::uint32_t earlier = std::min(a, b);
  while (later > earlier) later = before_[later];
  return later == earlier;
}

// The past of d, which is not in conflict with that of c, has gone further at the place of c.
bool LocalHistories::is_consumed_by(ConditionId c, ConditionId d) const {
  return last_at(conditions_[d].root, process_.place(c)) > conditions_[c].before;
}

// From the whole past of the event.
void LocalHistories::restore_history(EventId e) {
  std::vector<bool> seen(process_.event_count());
  std::vector<EventId> past{e};
  seen[e] = true;
  std::vector<std::uint32_t> last(entry_count_);
  for (std::size_t i = 0; i < past.size(); ++i) {
    for (std::uint32_t r = first_record_[past[i]];
         r < records_.size() && records_[r].event == past[i]; ++r) {
      last[records_[r].entry] = std::max(last[records_[r].entry], r);
    }
    for (const ConditionId c : process_.event(past[i]).preset()) {
      const EventId producer = process_.producer(c);
      if (producer == no_event || seen[producer]) continue;
      seen[producer] = true;
      past.push_back(producer);
    }
  }
  const NodeId own = node_count_;
  NodeId root = 0;
  for (std::uint32_t entry = 0; entry < entry_count_; ++entry) {
    if (last[entry] != 0) set(root, top_span_, entry, last[entry], own);
  }
  roots_[e] = root;
  kept_.push_back(e);
  const UnfoldedEvent& event = process_.event(e);
  for (std::uint32_t k = 0; k < event.postset_size; ++k) {
    conditions_[event.first_condition + k].root = root;
  }
}

void LocalHistories::give_up_oldest() {
  NodeChunks old;
  std::swap(old, node_chunks_);
  std::vector<NodeId> moved(std::exchange(node_count_, 0));
  new_node({});
  auto first_kept = kept_.size();
  while (first_kept > 0 && node_count_ < node_limit / 2) {
    NodeId& root = roots_[kept_[--first_kept]];
    root = copy_tree(root, top_span_, old, moved);
  }
  for (std::size_t i = 0; i < first_kept; ++i) roots_[kept_[i]] = given_up;
  for (ConditionId c = 0; c < conditions_.size(); ++c) {
    conditions_[c].root = root_of(process_.producer(c));
  }
  kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(first_kept));
}

LocalHistories::NodeId LocalHistories::copy_tree(NodeId id, std::uint32_t span,
                                                 const NodeChunks& old,
                                                 std::vector<NodeId>& moved) {
  if (id == 0 || moved[id] != 0) return moved[id];
  Node copy = old[id / chunk_size][id % chunk_size];
  if (span > 1) {
    for (NodeId& child : copy) child = copy_tree(child, span / fan_out, old, moved);
  }
  return moved[id] = new_node(copy);
}

}  // namespace vorel::unfolder
