// flow/flow_testing.h - for the tests of the steps of the flow.
// Here:      STGs with their prefixes and state graphs, traces played by the oracle.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "flow/flow_result.h"
#include "net/initial_values.h"
#include "oracle/coding.h"
#include "unfolder/unfolder.h"

namespace vorel::flow_testing {

// Complete, with initial values.
inline net::StgPrefix prefix_of(net::Stg stg) {
  unfolder::Unfolder<net::Stg> unfolder(std::move(stg), {});
  EXPECT_TRUE(unfolder.unfold());
  net::StgPrefix prefix = std::move(unfolder).result();
  EXPECT_TRUE(net::find_initial_values(prefix));
  return prefix;
}

struct Subject {
  explicit Subject(net::Stg stg)
      : prefix{prefix_of(std::move(stg))}, graph{oracle::explore<net::Stg>(prefix)} {}

  net::StgPrefix prefix;
  oracle::StateGraph<net::Stg> graph;
};

// The state after the trace, by position in the graph; nothing if it does not fire, or tells other
// signals and values than the STG.
inline std::optional<std::uint32_t> state_after(const Subject& subject,
                                                const flow::StgTrace& trace) {
  std::uint32_t state = 0;
  for (const flow::TraceStep& step : trace) {
    const auto& arcs = subject.graph.states[state].arcs;
    const auto arc = std::ranges::find_if(
        arcs, [&](const auto& a) { return a.transition->name == step.transition; });
    if (arc == arcs.end()) return std::nullopt;
    state = arc->target;
    const net::Signal& signal = *arc->transition->signal;
    if (step.signal != (signal.is_dummy() ? "" : signal.name)) return std::nullopt;
    const bool value =
        (signal.initial_value == 1) != subject.graph.states[state].parity[signal.index];
    if (!signal.is_dummy() && step.value != value) return std::nullopt;
  }
  return state;
}

}  // namespace vorel::flow_testing
