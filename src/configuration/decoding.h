// configuration/decoding.h - from a model back to events, traces and final cuts.
// Here:      reading the configuration, ordering it, the cut that it ends in.
// Not here:  whether the result is believed (configuration/validation.h).
#pragma once

#include <cassert>
#include <span>
#include <vector>

#include "configuration/configuration_vars.h"
#include "results/solution.h"

namespace vorel::configuration {

// The events of the configuration, in the order of the list of events. After a solve with a model.
template <net::Process P>
std::vector<const typename P::Event*> decode_events(const ConfigurationVars<P>& vars);

// The same events in an order in which they can fire: topological, first come first served among
// those that are ready, so the same events always give the same sequence. Events on a causal cycle
// are left out.
template <net::Process P>
std::vector<const typename P::Event*> firing_sequence(
    const P& process, std::span<const typename P::Event* const> events);

// The conditions that are marked after the events: produced or minimal, and not consumed.
template <net::Process P>
std::vector<const typename P::Condition*> final_cut(
    const P& process, std::span<const typename P::Event* const> events);

template <class Event>
results::Trace trace_of(std::span<const Event* const> events) {
  results::Trace trace;
  trace.reserve(events.size());
  for (const Event* event : events) trace.push_back({event->index, &event->transition->name});
  return trace;
}

// A trace of the configuration.
template <net::Process P>
results::Trace trace_to(const P& process, std::span<const typename P::Event* const> configuration) {
  return trace_of<typename P::Event>(firing_sequence<P>(process, configuration));
}

template <net::Process P>
std::vector<const typename P::Event*> events_of(const P& process, const results::Trace& trace) {
  std::vector<const typename P::Event*> events;
  events.reserve(trace.size());
  for (const results::TraceStep& step : trace) {
    assert(step.event < process.events.size());
    events.push_back(process.events[step.event].get());
  }
  return events;
}

}  // namespace vorel::configuration
