// oracle/history.h - configurations of a prefix, worked out from scratch each time.
// Here:      local configurations, cuts and their states, co-sets by definition.
// Not here:  any relation between events that is stored (there is none: slow but plain).
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "net/process.h"
#include "oracle/state_graph.h"

namespace vorel::oracle {

template <class N>
using EventSet =
    std::set<const net::EventOf<N>*, bool (*)(const net::EventOf<N>*, const net::EventOf<N>*)>;
template <class N>
using ConditionSpan = std::span<net::ConditionOf<N>* const>;

// The events that must happen before all of these conditions are there, by index.
template <class N>
EventSet<N> causes_of(ConditionSpan<N> conditions);
// The event and all its causes.
template <class N>
EventSet<N> local_configuration(const net::EventOf<N>& event);

// No condition is consumed twice. The set must hold the causes of its events.
template <class N>
bool is_conflict_free(const EventSet<N>& events);

// Some reachable cut has all of these conditions: their causes are free of conflicts and consume
// none of them.
template <class N>
bool is_co_set(ConditionSpan<N> conditions);

// The state after a configuration.
struct FinalState {
  Marking marking;
  Parity parity;
  auto operator<=>(const FinalState&) const = default;
};
// Nullopt when the cut has two conditions of one place: the net is not safe.
template <class N>
std::optional<FinalState> final_state(const net::PrefixOf<N>& prefix,
                                      const EventSet<N>& configuration);

}  // namespace vorel::oracle
