// configuration/configuration_encoding.h - clauses whose models are the configurations of a
// process. Here:      literals of events, conditions and places; causality, conflicts, maximal
// dummies. Not here:  properties of the final state (reach/deadlock_encoding.h).
//
// A configuration is a set of events, cut-offs excluded, that contains the producers of what it
// consumes and consumes nothing twice. Cut-off events never get a variable here.
#pragma once

#include <functional>

#include "configuration/configuration_vars.h"

namespace vorel::configuration {

// The literal of a non-cut-off event; a new variable at first use.
template <net::Process P>
sat::Lit event_lit(ConfigurationVars<P>& vars, const typename P::Event& event);

// True when a non-cut-off producer has fired, or when the condition is there from the start.
template <net::Process P>
sat::Lit produced_lit(ConfigurationVars<P>& vars, const typename P::Condition& condition,
                      sat::ClauseGroup group, sat::Polarity polarity);

// True when the condition is in the final cut.
template <net::Process P>
sat::Lit marked_lit(ConfigurationVars<P>& vars, const typename P::Condition& condition,
                    sat::ClauseGroup group, sat::Polarity polarity);

// A literal that is true if one of the instances (conditions of the place) is in the final cut; the
// other direction is not implied.
template <net::Process P>
sat::Lit place_lit(ConfigurationVars<P>& vars, const typename P::NetType::Place& place,
                   std::span<const typename P::Condition* const> instances, sat::ClauseGroup group);

// An event needs the producers of its preset.
template <net::Process P>
void encode_causality(const P& process, ConfigurationVars<P>& vars, sat::ClauseGroup group);

// A condition is consumed at most once.
template <net::Process P>
void encode_conflicts(const P& process, ConfigurationVars<P>& vars, sat::ClauseGroup group);

// An event for which the predicate holds (a dummy) is not maximal: one of its direct successors
// is in the configuration too. Cut-off successors do not count, as they are in no configuration.
template <net::Process P>
void encode_no_max_dummies(const P& process, ConfigurationVars<P>& vars, sat::ClauseGroup group,
                           const std::function<bool(const typename P::Event&)>& predicate);

}  // namespace vorel::configuration
