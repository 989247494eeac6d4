// configuration/configuration_vars.h - the literals of one encoded configuration.
// Here:      the tables from objects of a process to literals, filled lazily.
// Not here:  the clauses that make a model a configuration (configuration/configuration_encoding.h).
#pragma once

#include "base/indexed_by.h"
#include "net/process.h"
#include "sat/cnf_formula.h"

namespace vorel {

// Several of these stand side by side in a search over several configurations; they share the
// formula. An object that no constraint mentions costs a cell and nothing else. Valid as long as
// the formula is not reset.
template <Process P>
struct ConfigurationVars {
  using Event = typename P::Event;
  using Condition = typename P::Condition;
  using Place = typename P::NetType::Place;
  using Transition = typename P::NetType::Transition;

  ConfigurationVars(const P& process, CnfFormula& cnf)
      : formula{cnf},
        events(process.events.size()),
        produced(process.conditions.size()),
        marked(process.conditions.size()),
        places(process.places.size()),
        transitions(process.transitions.size()) {}

  CnfFormula& formula;
  bool no_branch = false;  // given to the variables of events

  IndexedBy<Event, LitCell> events;        // the event is in the configuration
  IndexedBy<Event, LitCell> event_aux;     // a second cell for engines that need one; they size it
  IndexedBy<Condition, LitCell> produced;  // the condition has been produced
  IndexedBy<Condition, LitCell> marked;    // the condition is in the final cut
  IndexedBy<Place, LitCell> places;        // the place is marked after the configuration
  IndexedBy<Transition, LitCell> transitions;  // the transition is enabled after it
};

}  // namespace vorel
