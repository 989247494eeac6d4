// configuration/state_literals.h - the state that an encoded configuration ends in, as literals.
// Here:      codes, excitation through dummies, next values, markings of places; made on demand.
// Not here:  the configuration itself (configuration/configuration_encoding.h).
// All definitions go into the permanent group, in both directions, and are made once.
#pragma once

#include "configuration/configuration_encoding.h"
#include "configuration/final_state.h"

namespace vorel::configuration {

// What the literals of all configurations of a prefix have in common.
class StateStructure {
 public:
  using Event = net::StgPrefix::Event;

  explicit StateStructure(const net::StgPrefix& prefix);

  const net::StgPrefix& prefix() const { return prefix_; }
  const SignalEvents& signal_events() const { return signal_events_; }

  // How many edges of its signal come before each event.
  const base::IndexedBy<Event, std::uint32_t>& edges_before() const { return edges_before_; }
  // All edges of the signal have a sign, so that those of one configuration are totally ordered.
  bool has_ordered_edges(std::uint32_t signal) const { return has_ordered_edges_[signal]; }
  // In the whole prefix, which must be without conflicts, no two edges of a signal are concurrent.
  bool has_only_ordered_edges() const;

  // The event can fire after a configuration, perhaps after dummies, exactly if the configuration
  // has all events of the first list and none of the second, and ends in the conditions, for which
  // many events compete: listing all of them for each would take quadratic space.
  struct Condition {
    bool possible = true;  // false: it never can
    EventSet needed, excluding;
    std::vector<const net::StgPrefix::Condition*> marked;
  };
  Condition firing_condition(const Event& event) const;

 private:
  void count_edges();

  const net::StgPrefix& prefix_;
  const SignalEvents signal_events_;
  base::IndexedBy<Event, std::uint32_t> edges_before_;
  std::vector<bool> has_ordered_edges_;  // by signal number
};

class StateLiterals {
 public:
  // Both must outlive it.
  StateLiterals(const StateStructure& structure, ConfigurationVars<net::StgPrefix>& vars);

  // By the number of a signal that is not a dummy.
  sat::Lit code(std::uint32_t signal);
  sat::Lit excited(std::uint32_t signal);
  sat::Lit next_value(std::uint32_t signal);
  // Whether some of the conditions (the instances of the place) is in the final cut.
  sat::Lit marked(const net::StgPlace& place,
                  std::span<const net::StgPrefix::Condition* const> instances);

 private:
  sat::Lit parity(std::uint32_t signal);
  sat::Lit parity_of_ordered_edges(std::uint32_t signal);
  sat::Lit can_fire(const net::StgPrefix::Event& event);
  sat::Lit event(std::uint32_t number);

  const StateStructure& structure_;
  ConfigurationVars<net::StgPrefix>& vars_;
  std::vector<sat::Lit> code_, excited_, next_;  // by signal number, LitUninit until asked for
};

}  // namespace vorel::configuration
