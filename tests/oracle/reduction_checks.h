// oracle/reduction_checks.h - whether transitions of an STG may be made to wait, state by state.
// Here:      a new place between given transitions, on the net with all its states; concurrency of
//            transitions.
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

// Valid ones leave what could happen sometime, and do not let signals disable others.
enum class Waiting { invalid, changes_nothing, valid };
Waiting judge(const net::Stg& stg, const WaitingPlace& place);

// In some state both can fire, in either order.
bool are_concurrent(const StateGraph<net::Stg>& graph, const net::StgTransition& a,
                    const net::StgTransition& b);
// From each state the initial one can be reached.
bool is_reversible(const StateGraph<net::Stg>& graph);

}  // namespace vorel::oracle
