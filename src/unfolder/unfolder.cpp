#include "unfolder/unfolder.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <string>
#include <utility>

#include "base/messages.h"
#include "net/check.h"

namespace vorel::unfolder {
namespace {

constexpr std::uint32_t range_size = 1024;  // elements that a worker makes at a time

template <class List, class Predicate>
std::string names_where(const List& list, Predicate holds, std::size_t& count) {
  std::string names;
  count = 0;
  for (const auto& element : list) {
    if (!holds(*element)) continue;
    if (count++ > 0) names += ", ";
    names += element->name;
  }
  return names;
}

// The events that must happen before both conditions are there, causes first: ids rise with
// causality.
std::set<EventId> past_of(const BranchingProcess& process, const CoSetFinder::UnsafePair& pair) {
  std::set<EventId> past;
  std::vector<ConditionId> walk{pair.first, pair.second};
  while (!walk.empty()) {
    const EventId producer = process.producer(walk.back());
    walk.pop_back();
    if (producer == no_event || !past.insert(producer).second) continue;
    const auto preset = process.event(producer).preset();
    walk.insert(walk.end(), preset.begin(), preset.end());
  }
  return past;
}

}  // namespace

template <class N>
Unfolder<N>::Unfolder(N net, const UnfoldOptions& options, UnfoldingLoop::Callback callback)
    : net_{std::move(net)},
      options_{options},
      flat_{flatten(net_)},
      loop_{flat_, options, std::move(callback)} {}

template <class N>
bool Unfolder<N>::unfold() {
  if (!has_presets() || !is_initially_safe()) return false;
  if (flat_.marked.empty()) base::print_warning("the initial marking is empty");
  return report(loop_.run());
}

template <class N>
bool Unfolder<N>::has_presets() const {
  std::size_t count = 0;
  const std::string names = names_where(
      net_.transitions, [](const auto& t) { return t.preset.empty(); }, count);
  if (count == 0) return true;
  base::print_error("the net contains " + std::to_string(count) +
                    " transition(s) with empty preset: " + names);
  return false;
}

template <class N>
bool Unfolder<N>::is_initially_safe() {
  std::size_t count = 0;
  const auto is_unsafe = [](const auto& p) { return p.initial_marking > 1; };
  const std::string names = names_where(net_.places, is_unsafe, count);
  if (count == 0) return true;
  const auto place =
      std::ranges::find_if(net_.places, [&](const auto& p) { return is_unsafe(*p); });
  unsafe_ = Unsafe{place->get(), {}};
  base::print_error("the initial marking is not safe: place(s) " + names);
  return false;
}

template <class N>
bool Unfolder<N>::report(UnfoldOutcome outcome) {
  is_complete_ = outcome == UnfoldOutcome::complete;
  const bool at_a_bound =
      outcome == UnfoldOutcome::too_many_events || outcome == UnfoldOutcome::out_of_time;
  if (options_.keep_incomplete && at_a_bound) return true;
  switch (outcome) {
    case UnfoldOutcome::complete:
      return true;
    case UnfoldOutcome::unsafe:
      report_unsafe();
      return false;
    case UnfoldOutcome::too_many_events:
      base::print_error("the prefix has more than " + std::to_string(options_.max_events) +
                        " events; so far " + loop_.progress());
      return false;
    case UnfoldOutcome::out_of_time:
      base::print_error(base::format_message("the prefix is not complete after %g seconds",
                                             options_.max_seconds) +
                        "; so far " + loop_.progress());
      return false;
    case UnfoldOutcome::too_few_threads:
      break;
  }
  base::print_error("cannot start " + std::to_string(options_.number_of_threads) + " threads");
  return false;
}

template <class N>
void Unfolder<N>::report_unsafe() {
  const BranchingProcess& process = loop_.process();
  unsafe_ = Unsafe{net_.places[process.place(loop_.unsafe_pair().first)].get(), {}};
  std::string names;
  for (const EventId e : past_of(process, loop_.unsafe_pair())) {
    const auto* transition = net_.transitions[process.event(e).transition].get();
    unsafe_->trace.push_back(transition);
    if (!names.empty()) names += ", ";
    names += transition->name;
  }
  base::print_error("the net is not safe, place " + unsafe_->place->name + "; trace:\n" + names);
}

template <class N>
void Unfolder<N>::warn_if_no_events() const {
  const bool all_cut_off = std::ranges::all_of(loop_.entered(), [this](EventId e) {
    return loop_.process().event(e).correspondent != not_cut_off;
  });
  if (all_cut_off) base::print_warning("the prefix contains no non-cut-off events");
}

template <class N>
net::PrefixOf<N> Unfolder<N>::result() && {
  const std::vector<EventId>& entered = loop_.entered();
  net::PrefixOf<N> prefix;
  static_cast<N&>(prefix) = std::move(net_);
  prefix.conditions.resize(loop_.process().condition_count());
  prefix.events.resize(entered.size());
  std::vector<std::uint32_t> numbers(loop_.process().event_count(), base::no_index);
  const auto event_count = static_cast<std::uint32_t>(entered.size());
  const auto condition_count = static_cast<std::uint32_t>(prefix.conditions.size());
  base::WorkerPool& pool = loop_.pool();
  pool.run_ranges(condition_count, range_size, [&](std::uint32_t, ConditionId c, ConditionId end) {
    for (; c < end; ++c) make_condition(prefix, c);
  });
  std::vector<Consumers> consumers(event_count / range_size + 1);
  pool.run_ranges(event_count, range_size, [&](std::uint32_t, std::uint32_t e, std::uint32_t end) {
    list_consumers(e, end, consumers[e / range_size]);
    for (; e < end; ++e) {
      assert(numbers[entered[e]] == base::no_index && "an event enters once");
      numbers[entered[e]] = e;
      make_event(prefix, e);
    }
  });
  pool.run(consumer_parts, [&](std::uint32_t, std::uint32_t part) {
    for (const Consumers& of_range : consumers) link_consumers(prefix, of_range, part);
  });
  pool.run_ranges(event_count, range_size, [&](std::uint32_t, std::uint32_t e, std::uint32_t end) {
    for (; e < end; ++e) set_cut_off(*prefix.events[e], entered[e], numbers, prefix);
  });
  net::check(prefix);
  return prefix;
}

template <class N>
void Unfolder<N>::make_condition(net::PrefixOf<N>& prefix, ConditionId c) const {
  auto condition = std::make_unique<net::ConditionOf<N>>();
  condition->index = c;
  condition->place = prefix.places[loop_.process().place(c)].get();
  prefix.conditions[c] = std::move(condition);
}

// With its own side of the links, and that of the conditions that it produces.
template <class N>
void Unfolder<N>::make_event(net::PrefixOf<N>& prefix, std::uint32_t number) const {
  const UnfoldedEvent& unfolded = loop_.process().event(loop_.entered()[number]);
  auto event = std::make_unique<net::EventOf<N>>();
  event->index = number;
  event->transition = prefix.transitions[unfolded.transition].get();
  event->preset.reserve(unfolded.preset_size);
  event->postset.reserve(unfolded.postset_size);
  for (const ConditionId c : unfolded.preset()) event->preset.push_back(prefix.conditions[c].get());
  for (std::uint32_t k = 0; k < unfolded.postset_size; ++k) {
    [[maybe_unused]] const bool is_first =
        net::add_link(*event, *prefix.conditions[unfolded.first_condition + k]);
    assert(is_first && "a condition has one producer");
  }
  prefix.events[number] = std::move(event);
}

// Lists what the events first .. end - 1 consume, in order, part by part of the conditions.
template <class N>
void Unfolder<N>::list_consumers(std::uint32_t first, std::uint32_t end,
                                 Consumers& consumers) const {
  const BranchingProcess& process = loop_.process();
  const std::uint32_t part_size = process.condition_count() / consumer_parts + 1;
  const auto for_each = [&](auto visit) {
    for (std::uint32_t e = first; e < end; ++e) {
      for (const ConditionId c : process.event(loop_.entered()[e]).preset()) {
        visit(e, c, c / part_size);
      }
    }
  };
  auto& ends = consumers.part_ends;
  for_each([&](std::uint32_t, ConditionId, std::uint32_t part) { ++ends[part]; });
  std::uint32_t sum = 0;
  for (std::uint32_t& part_end : ends) part_end = std::exchange(sum, sum + part_end);
  consumers.all.resize(sum);
  // What begins a part moves to its end.
  for_each([&](std::uint32_t e, ConditionId c, std::uint32_t part) {
    consumers.all[ends[part]++] = {c, e};
  });
}

template <class N>
void Unfolder<N>::link_consumers(net::PrefixOf<N>& prefix, const Consumers& consumers,
                                 std::uint32_t part) const {
  const std::uint32_t first = part == 0 ? 0 : consumers.part_ends[part - 1];
  for (std::uint32_t i = first; i < consumers.part_ends[part]; ++i) {
    const auto& [c, e] = consumers.all[i];
    prefix.conditions[c]->postset.push_back(prefix.events[e].get());
  }
}

template <class N>
void Unfolder<N>::set_cut_off(net::EventOf<N>& event, EventId id,
                              const std::vector<std::uint32_t>& numbers,
                              net::PrefixOf<N>& prefix) const {
  const EventId correspondent = loop_.process().event(id).correspondent;
  if (correspondent == not_cut_off) return;
  std::vector<net::EventOf<N>*> events;
  if (const auto several = loop_.non_local().find(id); several != loop_.non_local().end()) {
    for (const EventId e : several->second) events.push_back(prefix.events[numbers[e]].get());
  } else if (correspondent != initial_state) {
    assert(numbers[correspondent] != base::no_index && "a correspondent is in the prefix");
    events.push_back(prefix.events[numbers[correspondent]].get());
  }
  event.cut_off.set_correspondents(events);
}

template class Unfolder<net::Net>;
template class Unfolder<net::Stg>;

}  // namespace vorel::unfolder
