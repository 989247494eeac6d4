// net/causality.h - the causal order of a prefix.
// Here:      topological orders, local configurations.
// Not here:  conflict and concurrency.
#pragma once

#include <cstdint>
#include <span>
#include <type_traits>
#include <vector>

#include "net/process.h"

namespace vorel::net {

// All events, each after its causal predecessors; in the order of the list where that is one.
// Events on or after a causal cycle are missing: the result is shorter than the list exactly if the
// "prefix" is damaged.
template <class N>
std::vector<EventOf<N>*> topological_order(const PrefixOf<N>& prefix);

// The union of the local configurations of the events: each of them with all its causal
// predecessors, by index. Each event must be in a topological order.
template <class N>
std::vector<EventOf<N>*> causal_past(const PrefixOf<N>& prefix,
                                     std::type_identity_t<std::span<EventOf<N>* const>> events);

}  // namespace vorel::net
