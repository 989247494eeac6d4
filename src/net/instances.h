// net/instances.h - what leads from the elements of a net to those of its process.
// Here:      the conditions of a place, the events of a transition or signal; made when asked for.
// Not here:  elements by name (reachlang/process_index.h).
#pragma once

#include <span>

#include "base/grouping.h"
#include "net/process.h"

namespace vorel::net {

// Refers to a process, which must not change meanwhile. All results are sorted by index. The tables
// are filled at first use, each in one pass; not to be shared by threads.
template <Process P>
class Instances {
 public:
  using Place = typename P::NetType::Place;
  using Transition = typename P::NetType::Transition;
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  explicit Instances(const P& process) : process_{process} {}

  const P& process() const { return process_; }

  std::span<const Condition* const> conditions_of(base::Id<Place> place) const;
  std::span<const Event* const> events_of(base::Id<Transition> transition) const;
  std::span<const Transition* const> transitions_of(
      SignalId signal) const requires P::NetType::has_signals;
  // The edges of the signal, cut-offs included; of a dummy the events.
  std::span<const Event* const> events_of(SignalId signal) const requires P::NetType::has_signals;

 private:
  const P& process_;
  mutable base::Grouping<Condition> conditions_;    // by place
  mutable base::Grouping<Event> events_;            // by transition
  mutable base::Grouping<Transition> transitions_;  // by signal
  mutable base::Grouping<Event> edges_;             // by signal
};

}  // namespace vorel::net
