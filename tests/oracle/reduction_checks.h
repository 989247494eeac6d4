// oracle/reduction_checks.h - whether transitions of an STG may be made to wait, state by state.
// Here:      a new place between given transitions, on the net with all its states; concurrency of
//            transitions.
// Not here:  which input would be delayed (that is a matter of the target alone).
#pragma once

#include <string>
#include <vector>

#include "oracle/state_graph.h"

namespace vorel::oracle {

// A place that the sources produce on and the target consumes from.
struct WaitingPlace {
  std::vector<std::string> sources;
  std::string target;
  bool marked = false;
};

net::Stg with_place(const net::Stg& stg, const WaitingPlace& place);

enum class Waiting { unsafe, stops, disables, changes_nothing, valid };

// `stops`: after some run of the new net a transition can never fire any more that the old net
// could still fire sometime. `disables`: a signal disables another one that it did not; dummies
// disabled none of these. The graph is that of the STG before.
Waiting judge(const net::Stg& stg, const StateGraph<net::Stg>& graph, const WaitingPlace& place);

// In some state both can fire, in either order.
bool are_concurrent(const StateGraph<net::Stg>& graph, const net::StgTransition& a,
                    const net::StgTransition& b);
// From each state the initial one can be reached.
bool is_reversible(const StateGraph<net::Stg>& graph);

}  // namespace vorel::oracle
