// configuration/state_literals.h - the state that an encoded configuration ends in, as literals.
// Here:      marked places, enabled events and transitions, codes, excitation, next values.
// Not here:  the configuration itself (configuration/configuration_encoding.h), the same of a
//            configuration at hand (configuration/final_state.h), which it is checked against.
#pragma once

#include "configuration/configuration_vars.h"
#include "configuration/state_structure.h"

namespace vorel::configuration {

// Made on demand and once, in the group of the configuration's literals. A polarity says which half
// of a definition is wanted; codes and next values, which are compared, are defined in both.
template <net::Process P>
class StateLiterals {
 public:
  using Event = typename P::Event;
  using Place = typename P::NetType::Place;
  using Transition = typename P::NetType::Transition;

  // Both must outlive it.
  StateLiterals(const StateStructure<P>& structure, ConfigurationVars<P>& vars,
                Enabledness enabledness);

  ConfigurationVars<P>& vars() { return vars_; }
  const net::Instances<P>& instances() const { return structure_.instances(); }
  Enabledness enabledness() const { return enabledness_; }

  // Forgets all literals, those of the configuration too, after a reset of the formula.
  void clear();

  sat::Lit marked(const Place& place, sat::Polarity polarity = sat::default_polarity);
  // The parts of these disjunctions: the conditions of the place, and the events of the transition,
  // which on merged processes are not what decides.
  sat::Lits marked_conditions(const Place& place, sat::Polarity polarity);
  sat::Lits enabled_events(const Transition& transition,
                           sat::Polarity polarity) requires(!P::is_merged);
  // True if the place is marked; nothing follows if it is not. A variable more, and a clause for
  // each condition, where marked() takes a gate for each.
  sat::Lit marked_at_least(const Place& place);

  // Whether the event, or some event of the transition, can fire. A transition without events
  // never can.
  sat::Lit enabled(const Event& event, sat::Polarity polarity = sat::default_polarity);
  sat::Lit enabled(const Transition& transition, sat::Polarity polarity = sat::default_polarity);

  // Of a signal that is not a dummy: its value, and the value that it has or is about to take.
  sat::Lit code(net::SignalId signal) requires P::NetType::has_signals;
  sat::Lit next_value(net::SignalId signal) requires P::NetType::has_signals;
  // Whether an edge of the signal, or an event of the dummy, can fire.
  sat::Lit excited(net::SignalId signal,
                   sat::Polarity polarity = sat::default_polarity) requires P::NetType::has_signals;

 private:
  sat::Lits lits_before_firing(const Event& event, sat::Polarity polarity);
  sat::Lit parity(net::SignalId signal) requires P::NetType::has_signals;
  sat::Lit parity_of_ordered_edges(net::SignalId signal) requires std::is_same_v<P, net::StgPrefix>;

  const P& process() const { return structure_.process(); }
  sat::CnfFormula& formula() { return vars_.formula(); }

  const StateStructure<P>& structure_;
  ConfigurationVars<P>& vars_;
  const Enabledness enabledness_;
  LiteralTable<Event> enabled_;
  LiteralTable<net::Signal> code_, next_, excited_;
};

}  // namespace vorel::configuration
