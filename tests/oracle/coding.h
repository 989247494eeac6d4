// oracle/coding.h - what the state graph of an STG says about its codes.
// Here:      consistency and initial values, code of a state, CSC conflicts.
// Not here:  the state graph itself (oracle/state_graph.h).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "oracle/state_graph.h"

namespace vorel::oracle {

using Values = std::vector<std::uint8_t>;  // by signal index; 0 for a dummy

// The values that the signs of the transitions imply together with the values already known; 0
// where nothing implies one. Nullopt when they contradict each other: the STG is inconsistent.
std::optional<Values> find_initial_values(const net::Stg& stg, const StateGraph<net::Stg>& graph);

// Explores the STG and writes the values into its signals (dummies stay unknown). False, and
// nothing written, when the graph is not complete or not consistent.
bool assign_initial_values(net::Stg& stg, std::size_t max_states = 100'000);

// Value of each signal in the state.
Values code_of(const StateGraph<net::Stg>::State& state, const Values& initial);

// The states that dummies alone lead to, the first among them, with the least number of dummies.
std::map<std::uint32_t, std::size_t> after_dummies(const StateGraph<net::Stg>& graph,
                                                   std::uint32_t state);

// The non-dummy signals with an edge enabled in the state itself, or after firing dummies only.
using SignalSet = std::set<std::uint32_t>;
SignalSet enabled_through_dummies(const StateGraph<net::Stg>& graph, std::uint32_t state);

// Pairs of signals: in some state the first is enabled (by itself or after dummies only), and once
// the second has fired, dummies before it perhaps, the first is not. With the length of a shortest
// trace to there.
using SignalPair = std::pair<std::uint32_t, std::uint32_t>;
std::map<SignalPair, std::size_t> shortest_disablings(const StateGraph<net::Stg>& graph);
// Those pairs of which the first is an output or internal signal.
std::set<SignalPair> disabled_signals(const net::Stg& stg, const StateGraph<net::Stg>& graph);
// Those enabled before some dummy fires and not after it: what is enabled depends on how a state is
// reached.
SignalSet signals_that_dummies_disable(const StateGraph<net::Stg>& graph);

// The outputs and internal signals that are enabled in only one of two states with one code. With
// dummies, enabledness counts through them.
SignalSet csc_conflict_signals(const net::Stg& stg, const StateGraph<net::Stg>& graph,
                               const Values& initial);

// Whether the next-state function of the signal is monotonic (p) or antitonic (n) in the code.
struct Normalcy {
  bool p = true, n = true;
};
Normalcy normalcy_of(const StateGraph<net::Stg>& graph, const Values& initial,
                     std::uint32_t signal);

}  // namespace vorel::oracle
