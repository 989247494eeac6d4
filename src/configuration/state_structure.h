// configuration/state_structure.h - what all states of a process have in common.
// Here:      the instances of places, transitions and signals; the order of the edges of a signal;
//            when an event can fire after a configuration.
// Not here:  single states (configuration/final_state.h, configuration/state_literals.h).
#pragma once

#include <vector>

#include "configuration/event_set.h"
#include "net/instances.h"

namespace vorel::configuration {

// What counts as enabled after a configuration: what can fire at once, or also what can fire after
// dummies alone. Only prefixes of STGs have states of the second kind.
enum class Enabledness : std::uint8_t { direct, via_dummies };

// Refers to a process, which must not change meanwhile. What is asked for is made at first use: not
// to be shared by threads.
template <net::Process P>
class StateStructure {
 public:
  using Event = typename P::Event;

  explicit StateStructure(const P& process) : process_{process}, instances_{process} {}

  const P& process() const { return process_; }
  const net::Instances<P>& instances() const { return instances_; }

  // How many edges of its signal come before each event that is not a dummy. Prefixes of STGs only.
  const base::IndexedBy<Event, std::uint32_t>& edges_before()
      const requires std::is_same_v<P, net::StgPrefix>;
  // All edges of the signal have a sign, so that those of one configuration are totally ordered.
  bool has_ordered_edges(net::SignalId signal) const requires P::NetType::has_signals;
  // In the whole prefix, which must be without conflicts, no two edges of a signal are concurrent.
  bool has_only_ordered_edges() const requires std::is_same_v<P, net::StgPrefix>;

  // The event can fire after a configuration, perhaps after dummies, exactly if the configuration
  // has all events of the first list and none of the second, and ends in the conditions, for which
  // many events compete: listing all of them for each would take quadratic space. Cut-offs are in
  // no configuration, and may stand in both lists.
  struct FiringCondition {
    std::vector<const Event*> needed, excluded;  // each once
    std::vector<const typename P::Condition*> marked;
  };
  FiringCondition firing_condition(
      const Event& event) const requires std::is_same_v<P, net::StgPrefix>;

 private:
  const P& process_;
  const net::Instances<P> instances_;
  mutable base::IndexedBy<Event, std::uint32_t> edges_before_;  // empty until asked for
};

}  // namespace vorel::configuration
