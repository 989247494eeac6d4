// reach/deadlock_walk.h - deadlocks of a merged process that are easy to run into.
// Here:      random runs, until one ends in a deadlock or enough has been tried.
// Not here:  the search that has an answer in any case (reach/deadlock_check.h).
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "base/indexed_by.h"
#include "net/instances.h"
#include "net/process.h"

namespace vorel::reach {

// Where a net has a deadlock, it mostly has many, and a run that knows nothing gets stuck in one
// soon. A solver that knows nothing either has to put together a run from its end.
// The same process always gives the same runs. They consist of events that are not cut-offs, and
// each place is entered in the order of its occurrence depths: their sets of events are
// configurations.
template <net::Process P>
class DeadlockWalk {
 public:
  using Event = typename P::Event;
  using Condition = typename P::Condition;
  using Run = std::vector<const Event*>;

  // Keeps references to both.
  DeadlockWalk(const P& process, const net::Instances<P>& instances);

  // A run after which neither an event, be it a cut-off, nor a transition of the net is enabled.
  // Empty if none is found in so many steps (arcs of the process), and where nothing fires at all.
  Run find(std::uint64_t most_steps);

 private:
  static constexpr std::uint32_t absent = base::no_index;

  void start();
  void enter(const Condition& condition);
  void leave(const Condition& condition);
  const Event* next_event();
  bool fits(const Event& event) const;
  void fire(const Event& event);
  bool is_dead() const;

  const P& process_;
  const net::Instances<P>& instances_;
  std::mt19937 random_;
  std::uint64_t steps_ = 0;
  Run run_;
  base::IndexedBy<typename P::NetType::Place, std::int32_t> latest_;  // depth; 0 before the first
  base::IndexedBy<typename P::NetType::Place, bool> marked_;
  base::IndexedBy<Event, std::uint32_t> missing_;   // so many of its preset are not marked
  std::vector<const Event*> enabled_;               // no cut-offs
  base::IndexedBy<Event, std::uint32_t> position_;  // in that list
  std::uint32_t enabled_cut_offs_ = 0;
};

}  // namespace vorel::reach
