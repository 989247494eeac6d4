#include "unfolder/prefix_builder.h"

#include <algorithm>
#include <cassert>
#include <new>
#include <utility>

namespace vorel::unfolder {
namespace {

constexpr std::uint32_t range_size = 1024;  // events that a worker makes at a time

}  // namespace

template <class N>
PrefixBuilder<N>::PrefixBuilder(N&& net, UnfoldingLoop& loop)
    : loop_{loop}, process_{loop.process()}, entered_{loop.entered()} {
  static_cast<N&>(prefix_) = std::move(net);
}

template <class N>
net::PrefixOf<N> PrefixBuilder<N>::build() {
  const auto event_count = static_cast<std::uint32_t>(entered_.size());
  const std::uint32_t range_count = event_count / range_size + (event_count % range_size != 0);
  numbers_.resize(process_.event_count(), base::no_index);
  links_.resize(range_count);
  base::WorkerPool& pool = loop_.pool();
  pool.run_ranges(event_count, range_size, [&](std::uint32_t, std::uint32_t e, std::uint32_t end) {
    list_links(e, end, links_[e / range_size]);
  });
  take_blocks();
  pool.run(part_count + range_count, [&](std::uint32_t, std::uint32_t item) {
    if (item < part_count) return make_conditions(item);
    const std::uint32_t first = (item - part_count) * range_size;
    make_events(first, std::min(first + range_size, event_count), links_[item - part_count]);
  });
  return std::move(prefix_);
}

// Lists what the events first .. end - 1 consume, in order, part by part of the conditions.
template <class N>
void PrefixBuilder<N>::list_links(std::uint32_t first, std::uint32_t end, Links& links) {
  const std::uint32_t part_size = part(0).end;
  const auto for_each = [&](auto visit) {
    for (std::uint32_t e = first; e < end; ++e) {
      for (const ConditionId c : unfolded(e).preset()) visit(e, c, c / part_size);
    }
  };
  for (std::uint32_t e = first; e < end; ++e) {
    assert(numbers_[entered_[e]] == base::no_index && "an event enters once");
    numbers_[entered_[e]] = e;
    links.count += unfolded(e).preset_size + unfolded(e).postset_size;
  }
  auto& ends = links.part_ends;
  for_each([&](std::uint32_t, ConditionId, std::uint32_t number) { ++ends[number]; });
  std::uint32_t sum = 0;
  for (std::uint32_t& part_end : ends) part_end = std::exchange(sum, sum + part_end);
  links.consumers.resize(sum);
  // What begins a part moves to its end.
  for_each([&](std::uint32_t e, ConditionId c, std::uint32_t number) {
    links.consumers[ends[number]++] = {c, e};
  });
}

template <class N>
void PrefixBuilder<N>::take_blocks() {
  prefix_.conditions.resize(process_.condition_count());
  prefix_.events.resize(entered_.size());
  conditions_ = prefix_.blocks.template take<Condition>(prefix_.conditions.size());
  events_ = prefix_.blocks.template take<Event>(prefix_.events.size());
  std::size_t link_count = 0, consumer_count = 0;
  for (const Links& links : links_) {
    link_count += links.count;
    consumer_count += links.consumers.size();
  }
  Condition** lists = prefix_.blocks.template take<Condition*>(link_count);
  for (Links& links : links_) links.lists = std::exchange(lists, lists + links.count);
  Event** consumers = prefix_.blocks.template take<Event*>(consumer_count);
  for (std::uint32_t number = 0; number < part_count; ++number) {
    consumers_[number] = consumers;
    for (const Links& links : links_) {
      consumers += links.part_ends[number] - (number == 0 ? 0 : links.part_ends[number - 1]);
    }
  }
}

template <class N>
typename PrefixBuilder<N>::Part PrefixBuilder<N>::part(std::uint32_t number) const {
  const ConditionId count = process_.condition_count();
  const ConditionId size = count / part_count + 1;
  return {std::min(number * size, count), std::min((number + 1) * size, count)};
}

template <class N>
void PrefixBuilder<N>::make_conditions(std::uint32_t part_number) {
  const auto [first, end] = part(part_number);
  const auto for_each = [&](auto visit) {
    for (const Links& links : links_) {
      std::uint32_t i = part_number == 0 ? 0 : links.part_ends[part_number - 1];
      for (; i < links.part_ends[part_number]; ++i) {
        visit(links.consumers[i].condition - first, links.consumers[i].event);
      }
    }
  };
  // By condition: how many consume it, then where they begin, then where they end.
  std::vector<std::uint32_t> ends(end - first);
  for_each([&](std::uint32_t i, std::uint32_t) { ++ends[i]; });
  std::uint32_t sum = 0;
  for (std::uint32_t& list_end : ends) list_end = std::exchange(sum, sum + list_end);
  Event** const consumers = consumers_[part_number];
  for_each([&](std::uint32_t i, std::uint32_t e) { consumers[ends[i]++] = events_ + e; });
  std::uint32_t begin = 0;
  for (std::uint32_t i = 0; i < ends.size(); begin = ends[i++]) {
    make_condition(first + i, {consumers + begin, ends[i] - begin});
  }
}

template <class N>
void PrefixBuilder<N>::make_condition(ConditionId c, std::span<Event*> consumers) {
  auto* const condition = ::new (conditions_ + c) Condition;
  condition->index = c;
  condition->lies_in_block = true;
  condition->place = prefix_.places[process_.place(c)].get();
  if (const EventId producer = process_.producer(c); producer != no_event)
    condition->pre_event = events_ + numbers_[producer];
  condition->postset.borrow(consumers);
  prefix_.conditions[c].reset(condition);
}

template <class N>
void PrefixBuilder<N>::make_events(std::uint32_t first, std::uint32_t end, const Links& links) {
  Condition** list = links.lists;
  for (std::uint32_t e = first; e < end; ++e) {
    const UnfoldedEvent& of_process = unfolded(e);
    auto* const event = ::new (events_ + e) Event;
    event->index = e;
    event->lies_in_block = true;
    event->transition = prefix_.transitions[of_process.transition].get();
    for (const ConditionId c : of_process.preset()) *list++ = conditions_ + c;
    event->preset.borrow({list - of_process.preset_size, of_process.preset_size});
    for (std::uint32_t k = 0; k < of_process.postset_size; ++k) {
      *list++ = conditions_ + of_process.first_condition + k;
    }
    event->postset.borrow({list - of_process.postset_size, of_process.postset_size});
    set_cut_off(*event, entered_[e]);
    prefix_.events[e].reset(event);
  }
}

template <class N>
void PrefixBuilder<N>::set_cut_off(Event& event, EventId id) const {
  const EventId correspondent = process_.event(id).correspondent;
  if (correspondent == not_cut_off) return;
  std::vector<Event*> events;
  if (const auto several = loop_.non_local().find(id); several != loop_.non_local().end()) {
    for (const EventId e : several->second) events.push_back(events_ + numbers_[e]);
  } else if (correspondent != initial_state) {
    assert(numbers_[correspondent] != base::no_index && "a correspondent is in the prefix");
    return event.cut_off.set_correspondents(std::array{events_ + numbers_[correspondent]});
  }
  event.cut_off.set_correspondents(events);
}

template class PrefixBuilder<net::Net>;
template class PrefixBuilder<net::Stg>;

}  // namespace vorel::unfolder
