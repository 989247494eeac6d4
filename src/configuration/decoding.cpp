#include "configuration/decoding.h"

#include <algorithm>
#include <cassert>

namespace vorel::configuration {
namespace {

// Calls the function with each direct successor inside the configuration; in a configuration at
// most one consumer of a condition is inside.
template <class Event, class Inside, class Function>
void for_each_successor(const Event& event, const Inside& inside, Function function) {
  for (const auto* condition : event.postset) {
    const auto consumer = std::ranges::find_if(
        condition->postset,
        [&inside](const Event* event_after) { return inside.contains(*event_after); });
    if (consumer != condition->postset.end()) function(**consumer);
  }
}

}  // namespace

template <net::Process P>
std::vector<const typename P::Event*> decode_events(const ConfigurationVars<P>& vars) {
  std::vector<const typename P::Event*> events;
  for (const auto& event : vars.process().events) {
    if (vars.is_in_model(*event)) events.push_back(event.get());
  }
  return events;
}

template <net::Process P>
std::vector<const typename P::Event*> firing_sequence(
    const P& process, std::span<const typename P::Event* const> events) {
  using Event = typename P::Event;
  base::MarkSet<Event> inside(process.events.size());
  for (const Event* event : events) inside.insert(*event);
  base::IndexedBy<Event, std::uint32_t> waiting_for(process.events.size());
  for (const Event* event : events) {
    for_each_successor(*event, inside, [&](const Event& next) { ++waiting_for[next]; });
  }
  std::vector<const Event*> sequence;
  sequence.reserve(events.size());
  for (const Event* event : events) {
    if (waiting_for[*event] == 0) sequence.push_back(event);
  }
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    for_each_successor(*sequence[i], inside, [&](const Event& next) {
      if (--waiting_for[next] == 0) sequence.push_back(&next);
    });
  }
  assert(sequence.size() <= events.size() && "each event at most once");
  return sequence;
}

template <net::Process P>
std::vector<const typename P::Condition*> final_cut(
    const P& process, std::span<const typename P::Event* const> events) {
  using Condition = typename P::Condition;
  base::MarkSet<Condition> consumed(process.conditions.size());
  for (const auto* event : events) {
    for (const Condition* condition : event->preset) consumed.insert(*condition);
  }
  std::vector<const Condition*> cut;
  for (const auto& condition : process.conditions) {
    if (condition->is_initial() && !consumed.contains(*condition)) cut.push_back(condition.get());
  }
  for (const auto* event : events) {
    for (const Condition* condition : event->postset) {
      assert(condition->index != base::no_index &&
             "only cut-offs have conditions without a number");
      if (!consumed.contains(*condition)) cut.push_back(condition);
    }
  }
  return cut;
}

#define INSTANTIATE(P)                                                                        \
  template std::vector<const P::Event*> decode_events<P>(const ConfigurationVars<P>&);        \
  template std::vector<const P::Event*> firing_sequence<P>(const P&,                          \
                                                           std::span<const P::Event* const>); \
  template std::vector<const P::Condition*> final_cut<P>(const P&,                            \
                                                         std::span<const P::Event* const>);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
