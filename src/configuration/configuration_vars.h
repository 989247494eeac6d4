// configuration/configuration_vars.h - the literals of one encoded configuration.
// Here:      the tables from objects of a process to literals, filled lazily; what a literal of an
//            event or a condition means.
// Not here:  the clauses on them (configuration/configuration_encoding.h), the state that the
//            configuration ends in (configuration/state_literals.h).
#pragma once

#include "configuration/literal_table.h"
#include "net/process.h"
#include "sat/cnf_formula.h"

namespace vorel::configuration {

// Several of these stand side by side in a search over several configurations; they share the
// formula. An object that no constraint mentions costs a cell and nothing else. Valid as long as
// the formula is not reset. A cut-off is in no configuration: its literal is LitFalse, so that
// encoders need not tell cut-offs from other events.
template <net::Process P>
class ConfigurationVars {
 public:
  using Event = typename P::Event;
  using Condition = typename P::Condition;
  using Place = typename P::NetType::Place;
  using Transition = typename P::NetType::Transition;

  // What is defined goes into the group. Refers to the process and the formula.
  ConfigurationVars(const P& process, sat::CnfFormula& formula,
                    sat::ClauseGroup group = sat::PermanentGroup);

  const P& process() const { return process_; }
  sat::CnfFormula& formula() const { return formula_; }
  sat::ClauseGroup group() const { return group_; }

  // The event is in the configuration; a new variable at first use.
  sat::Lit event_lit(const Event& event);
  sat::Lit event_lit(base::Id<Event> event) { return event_lit(*process_.events[event.value]); }
  // The condition is there from the start, or a producer is in the configuration.
  sat::Lit produced_lit(const Condition& condition, sat::Polarity polarity);
  // The condition is in the final cut.
  sat::Lit marked_lit(const Condition& condition, sat::Polarity polarity);

  // What the solver has said: false for an event that was never mentioned.
  bool is_in_model(const Event& event) const;
  // The literal of the event if it has one that is a variable, LitUninit otherwise.
  sat::Lit variable_of(const Event& event) const;

  // The events that have literals, in the order in which they were asked for.
  std::span<const base::Id<Event>> mentioned_events() const { return events_.asked_for(); }

  // Forgets all literals, after a reset of the formula.
  void clear();

  bool no_branch = false;  // given to the variables of events

  base::IndexedBy<Event, sat::LitCell> event_aux;  // a second cell for engines that size it
  LiteralTable<Place> places;                      // the place is marked after the configuration
  LiteralTable<Transition> transitions;            // the transition is enabled after it

 private:
  const P& process_;
  sat::CnfFormula& formula_;
  const sat::ClauseGroup group_;
  LiteralTable<Event> events_;
  LiteralTable<Condition> produced_, marked_;
  sat::Lits scratch_;
};

}  // namespace vorel::configuration
