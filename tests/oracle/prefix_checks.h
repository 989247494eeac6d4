// oracle/prefix_checks.h - whether a prefix is one, and whether it is complete, by brute force.
// Here:      checks against the net and its state graph that know nothing of how it was made.
// Not here:  the structural checks that the program itself makes of its input.
// A check gives the first fault in words, and an empty text when there is none. Conditions after
// cut-offs may be missing from the list of conditions.
#pragma once

#include <cstddef>
#include <string>

#include "net/process.h"
#include "oracle/state_graph.h"

namespace vorel::oracle {

// Each event matches the arcs of its transition and has a history without conflicts; no event
// occurs twice, no initial condition is missing, nothing lies after a cut-off, and each cut-off
// reaches the state of its correspondents, which together are one configuration.
template <class N>
std::string branching_fault(const net::PrefixOf<N>& prefix);

// Every reachable state is reached by a configuration without cut-offs, and every transition
// enabled there has an event there, be it a cut-off. Tries all configurations: a prefix with more
// of them than allowed is a fault too.
template <class N>
std::string completeness_fault(const net::PrefixOf<N>& prefix, const StateGraph<N>& graph,
                               std::size_t max_configurations = 100'000);

}  // namespace vorel::oracle
