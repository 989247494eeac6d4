// verify/trace_builder.h - from a configuration in whose state something is wrong to a finding.
// Here:      leaving out events that the fault does not need, replaying, edges of wires.
// Not here:  the search for configurations, what is wrong (verify/faults.h).
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "base/deadline.h"
#include "net/process.h"
#include "verify/faults.h"

namespace vorel::verify {

class TraceBuilder {
 public:
  using Event = net::NetPrefix::Event;

  // All must outlive it.
  TraceBuilder(const Composition& composition, const FaultFinder& faults,
               const base::Deadline& deadline)
      : composition_{composition}, faults_{faults}, deadline_{deadline} {}

  // After the events of a configuration, causes first; nothing after the error that circuit and STG
  // cannot do them.
  std::optional<GameState> state_after(std::span<const Event* const> events) const;
  // The fault holds after the events; nothing after the error that it cannot be replayed.
  std::optional<Finding> finding(const Fault& fault, std::vector<const Event*> events,
                                 bool is_persistent = false) const;

 private:
  const Move& move_of(const Event& event) const {
    return composition_.moves()[event.transition->index];
  }
  // Leaves out events at the end, one by one, after which it is still so.
  void shorten(const Fault& fault, std::vector<const Event*>& events, GameState state,
               bool is_persistent) const;

  const Composition& composition_;
  const FaultFinder& faults_;
  const base::Deadline& deadline_;
};

}  // namespace vorel::verify
