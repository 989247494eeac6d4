#include "unfolder/configuration_order.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "base/sort_unique.h"

namespace vorel::unfolder {
namespace {

int sign_of(std::int64_t difference) { return difference < 0 ? -1 : (difference > 0 ? 1 : 0); }

}  // namespace

// An event is a cut-off if a smaller configuration ends in the state of its own one; what "smaller"
// is makes the prefix large or small, and must be adequate for it to be complete [McM-1993,
// ERV-2002]. Neither states nor configurations are stored: all that is compared is what two
// configurations do not share, found by a walk that stops where the rest is common. Their states
// are equal if those two parts have the same effect, place by place and, for the parities, signal
// by signal; the fingerprints by which the table finds candidates may lie, this does not. The
// shared part drops out of sizes and sorted lists of transitions, and of Foata normal forms as
// well: the level of an event in its configuration is its depth, whatever else is in there.
ConfigurationOrder::ConfigurationOrder(const BranchingProcess& process,
                                       const UnfoldOptions& options)
    : process_{process},
      net_{process.net()},
      options_{options},
      difference_{process},
      balance_(std::max({net_.place_count, net_.transition_count, net_.signal_count})) {}

void ConfigurationOrder::measure(UnfoldedEvent& event) {
  assert(event.transition < net_.transition_count && !event.preset().empty());
  causes_.clear();
  for (const ConditionId c : event.preset()) {
    const EventId cause = process_.producer(c);
    if (cause != no_event) causes_.push_back(cause);
  }
  base::sort_unique(causes_);
  event.size = 1;
  event.depth = 1;
  event.dummies = net_.is_dummy[event.transition];
  event.state = net_.firing_hash[event.transition];
  if (causes_.empty()) return;
  // The past of the producer with the largest one, and what the others add to it.
  const auto size_of = [this](EventId e) { return process_.event(e).size; };
  std::iter_swap(causes_.begin(), std::ranges::max_element(causes_, {}, size_of));
  for (const EventId e : causes_) {
    event.depth = std::max(event.depth, process_.event(e).depth + 1);
  }
  const UnfoldedEvent& largest = process_.event(causes_.front());
  event.size += largest.size;
  event.dummies += largest.dummies;
  event.state.add(largest.state);
  if (causes_.size() == 1) return;
  const std::span<const EventId> all = causes_;
  if (histories_ != nullptr && histories_->are_known(all)) {
    const LocalHistories::Sum added = histories_->added_to_first(all, scratch_);
    event.size += added.size;
    event.dummies += added.dummies;
    event.state.add(added.state);
    return;
  }
  difference_.walk(all.first(1), all.subspan(1), [&](EventId e, Side side) {
    if (side == Side::first) return;
    const TransitionId t = process_.origin(e).transition();
    event.size += 1;
    event.dummies += net_.is_dummy[t];
    event.state.add(net_.firing_hash[t]);
  });
  assert(event.depth <= event.size && event.dummies <= event.size);
}

ConfigurationOrder::Comparison ConfigurationOrder::compare(EventId e, EventId f) {
  Comparison result = compare(std::array{e}, std::array{f});
  if (result.equal_states) result.order = respecting_dummies(e, f, result.order);
  return result;
}

ConfigurationOrder::Comparison ConfigurationOrder::compare_to_empty(EventId e) {
  find_difference(std::array{e}, {});
  const UnfoldedEvent& event = process_.event(e);
  assert(e_only_.size() == event.size && "the whole past is the difference to nothing");
  if (!differences_cancel()) return {};
  // A dummy that only undoes what other events did is as good as any other event, but cutting
  // there would leave a configuration that ends in a dummy: only dummies may be cut as a whole.
  const bool is_kept = !options_.dummy_cutoffs && net_.is_dummy[event.transition] != 0 &&
                       event.dummies != event.size;
  return {true, is_kept ? 0 : 1};
}

ConfigurationOrder::Comparison ConfigurationOrder::compare(std::span<const EventId> e,
                                                           std::span<const EventId> f) {
  ++comparisons_;
  find_difference(e, f);
  if (!differences_cancel()) return {};
  return {true, by_order()};
}

void ConfigurationOrder::find_difference(std::span<const EventId> e, std::span<const EventId> f) {
  e_only_.clear();
  f_only_.clear();
  difference_.walk(e, f, [this](EventId event, Side side) {
    (side == Side::first ? e_only_ : f_only_).push_back(event);
  });
}

// True when the events of either side have the same effect on the state.
bool ConfigurationOrder::differences_cancel() {
  assert(touched_.empty() && "the balance is 0 between uses");
  bool equal = true;
  const auto count = [this](std::uint32_t entry, std::int32_t change) {
    balance_[entry] += change;
    touched_.push_back(entry);
  };
  const auto clear = [&](bool modulo_two) {
    for (const std::uint32_t entry : touched_) {
      equal = equal && (modulo_two ? balance_[entry] % 2 : balance_[entry]) == 0;
      balance_[entry] = 0;
    }
    touched_.clear();
  };
  const auto for_each_side = [this](auto visit) {
    for (const EventId e : e_only_) visit(process_.origin(e).transition(), 1);
    for (const EventId f : f_only_) visit(process_.origin(f).transition(), -1);
  };
  for_each_side([&](TransitionId t, std::int32_t change) {
    for (const PlaceId p : net_.preset[t]) count(p, -change);
    for (const PlaceId p : net_.postset[t]) count(p, change);
  });
  // Each entry is cleared at its first mention; later mentions of it find 0.
  clear(false);
  for_each_side([&](TransitionId t, std::int32_t change) {
    if (net_.signal[t] != base::no_index) count(net_.signal[t], change);
  });
  clear(true);
  return equal;
}

int ConfigurationOrder::by_order() {
  // What two configurations share counts on both sides.
  const int by_size = sign_of(static_cast<std::int64_t>(e_only_.size()) -
                              static_cast<std::int64_t>(f_only_.size()));
  switch (options_.order) {
    case AdequateOrder::inclusion:
      return (by_size < 0 && e_only_.empty()) || (by_size > 0 && f_only_.empty()) ? by_size : 0;
    case AdequateOrder::size:
      return by_size;
    case AdequateOrder::parikh:
      return by_size != 0 ? by_size : by_transitions();
    case AdequateOrder::foata:
      break;
  }
  if (by_size != 0) return by_size;
  const int by_parikh = by_transitions();
  return by_parikh != 0 ? by_parikh : by_levels();
}

int ConfigurationOrder::by_transitions() { return by_counts(e_only_, f_only_); }

// Sorted lists of transition numbers, of which the parts are what differs: the first number that
// occurs more often on one side stands there where the other side has a higher one.
int ConfigurationOrder::by_counts(std::span<const EventId> e_part,
                                  std::span<const EventId> f_part) {
  const auto count = [this](std::span<const EventId> part, std::int32_t change) {
    for (const EventId event : part) {
      const TransitionId t = process_.origin(event).transition();
      balance_[t] += change;
      touched_.push_back(t);
    }
  };
  count(e_part, 1);
  count(f_part, -1);
  std::uint32_t first = base::no_index;
  int result = 0;
  for (const TransitionId t : touched_) {
    if (balance_[t] == 0 || t >= first) continue;
    first = t;
    result = balance_[t] > 0 ? -1 : 1;
  }
  for (const TransitionId t : touched_) balance_[t] = 0;
  touched_.clear();
  return result;
}

// Foata normal forms level by level: the level of an event is its depth. First the sizes of the
// levels, then their transitions.
int ConfigurationOrder::by_levels() {
  const auto depth_of = [this](EventId e) { return process_.event(e).depth; };
  std::ranges::sort(e_only_, {}, depth_of);
  std::ranges::sort(f_only_, {}, depth_of);
  std::span<const EventId> e_rest = e_only_, f_rest = f_only_;
  while (!e_rest.empty() || !f_rest.empty()) {
    std::uint32_t level = 0xFFFFFFFFu;
    if (!e_rest.empty()) level = std::min(level, depth_of(e_rest.front()));
    if (!f_rest.empty()) level = std::min(level, depth_of(f_rest.front()));
    const auto take = [&](std::span<const EventId>& rest) {
      const auto end = std::ranges::upper_bound(rest, level, {}, depth_of);
      const auto part = rest.first(static_cast<std::size_t>(end - rest.begin()));
      rest = rest.subspan(part.size());
      return part;
    };
    const auto e_part = take(e_rest), f_part = take(f_rest);
    if (e_part.size() != f_part.size()) return e_part.size() < f_part.size() ? -1 : 1;
    if (const int result = by_counts(e_part, f_part); result != 0) return result;
  }
  return 0;
}

// With a dummy as the cut-off, the configuration would end in a dummy; unless the dummies are all
// that it adds to its correspondent, both are kept.
int ConfigurationOrder::respecting_dummies(EventId e, EventId f, int order) const {
  if (order == 0 || options_.dummy_cutoffs) return order;
  if (net_.is_dummy[process_.origin(order > 0 ? e : f).transition()] == 0) return order;
  if (order < 0) return 0;
  const UnfoldedEvent& larger = process_.event(e);
  const UnfoldedEvent& smaller = process_.event(f);
  assert((smaller.size <= larger.size || options_.order == AdequateOrder::inclusion) &&
         "every order refines the order by size, or inclusion");
  const bool adds_only_dummies =
      f_only_.empty() && larger.dummies - smaller.dummies == larger.size - smaller.size;
  return adds_only_dummies ? order : 0;
}

}  // namespace vorel::unfolder
