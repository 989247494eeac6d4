// configuration/configuration_vars.h - the literals of one encoded configuration.
// Here:      the tables from objects of a process to literals, filled lazily.
// Not here:  the clauses that make a model a configuration
// (configuration/configuration_encoding.h).
#pragma once

#include "base/indexed_by.h"
#include "net/process.h"
#include "sat/cnf_formula.h"

namespace vorel::configuration {

// Several of these stand side by side in a search over several configurations; they share the
// formula. An object that no constraint mentions costs a cell and nothing else. Valid as long as
// the formula is not reset.
template <net::Process P>
struct ConfigurationVars {
  using Event = typename P::Event;
  using Condition = typename P::Condition;
  using Place = typename P::NetType::Place;
  using Transition = typename P::NetType::Transition;

  ConfigurationVars(const P& process, sat::CnfFormula& cnf)
      : formula{cnf},
        events(process.events.size()),
        produced(process.conditions.size()),
        marked(process.conditions.size()),
        places(process.places.size()),
        transitions(process.transitions.size()) {}

  sat::CnfFormula& formula;
  bool no_branch = false;  // given to the variables of events

  base::IndexedBy<Event, sat::LitCell> events;  // the event is in the configuration
  base::IndexedBy<Event, sat::LitCell>
      event_aux;  // a second cell for engines that need one; they size it
  base::IndexedBy<Condition, sat::LitCell> produced;  // the condition has been produced
  base::IndexedBy<Condition, sat::LitCell> marked;    // the condition is in the final cut
  base::IndexedBy<Place, sat::LitCell> places;        // the place is marked after the configuration
  base::IndexedBy<Transition, sat::LitCell> transitions;  // the transition is enabled after it
};

}  // namespace vorel::configuration
