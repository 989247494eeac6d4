// configuration/final_state.h - the state that a configuration at hand ends in.
// Here:      what is marked, enabled and excited, the code; no clauses.
// Not here:  the same as literals (configuration/state_literals.h), which is checked against this.
//
// A signal is excited when one of its events can fire. Dummies that lie at the end of a
// configuration are best left out of it where what is enabled after dummies counts: what is excited
// after them is excited before.
#pragma once

#include <optional>
#include <vector>

#include "configuration/state_structure.h"

namespace vorel::configuration {

// Of one configuration, whose events must not change while this lives; nor must the structure,
// which is referred to. Nothing is computed before it is asked for.
template <net::Process P>
class FinalState {
 public:
  using Event = typename P::Event;
  using Condition = typename P::Condition;
  using Place = typename P::NetType::Place;
  using Transition = typename P::NetType::Transition;

  FinalState(const StateStructure<P>& structure, std::span<const Event* const> events,
             Enabledness enabledness);
  FinalState(const StateStructure<P>& structure, const EventSet& configuration,
             Enabledness enabledness =
                 Enabledness::via_dummies) requires std::is_same_v<P, net::StgPrefix>;

  const P& process() const { return structure_.process(); }

  bool has_fired(const Event& event) const { return has_fired_[event]; }
  bool is_marked(const Condition& condition) const;
  bool is_marked(const Place& place) const;
  bool is_enabled(const Event& event) const;
  // One without events never is.
  bool is_enabled(const Transition& transition) const;

  // Whether an edge of the signal, or an event of the dummy, can fire.
  bool is_excited(net::SignalId signal) const requires P::NetType::has_signals;
  // The value of a signal that is not a dummy; that which it has or is about to take.
  bool value(net::SignalId signal) const requires P::NetType::has_signals;
  bool next_value(net::SignalId signal) const requires P::NetType::has_signals;
  // The values of the signals that are not dummies, by number.
  base::IndexedBy<net::Signal, bool> code() const requires P::NetType::has_signals;
  // The excited outputs and internal signals, ascending.
  std::vector<net::SignalId> excited_signals() const requires P::NetType::has_signals;

  // The numbers of the marked places, ascending; nullopt after the error "the net is not safe".
  std::optional<std::vector<base::Id<Place>>> marking() const;

 private:
  // Everything that is consumed is produced, and nothing is consumed twice. For assertions.
  bool is_configuration() const;
  bool is_consumed(const Condition& condition) const;
  bool is_produced(const Condition& condition) const;
  bool is_enabled_after_dummies(const Event& target) const;
  std::vector<const Event*> fired_events() const;

  const StateStructure<P>& structure_;
  const Enabledness enabledness_;
  base::IndexedBy<Event, bool> has_fired_;
};

}  // namespace vorel::configuration
