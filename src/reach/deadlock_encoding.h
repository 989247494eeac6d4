// reach/deadlock_encoding.h - clauses that make the final state of a configuration a deadlock.
// Here:      the two methods of -D.
// Not here:  the configuration itself (configuration/configuration_encoding.h), the search
//            (reach/deadlock_check.h).
#pragma once

#include "configuration/configuration_encoding.h"

namespace vorel::reach {

// Method 1: no event of the prefix is enabled by the final cut, be it a cut-off or not. Cut-offs
// stand for what could go on after them; they are in no configuration themselves, so as members of
// a clause they count as false. In a merged process that is not enough: a configuration may merge
// from one that goes on behind a cut-off, and what its final state enables need not have an event
// there. So the marking is looked at, too.
template <net::Process P>
void encode_deadlock_with_cutoffs(const P& process, configuration::ConfigurationVars<P>& vars,
                                  sat::ClauseGroup group);

// Method 2: no transition of the net is enabled by the final marking. Cut-offs are ignored but for
// what they say of the completeness of the prefix.
template <net::Process P>
void encode_deadlock_ignoring_cutoffs(const P& process, configuration::ConfigurationVars<P>& vars,
                                      sat::ClauseGroup group);

// The consumers (events, or transitions of a net) whose preset contains that of another one, or
// equals that of a lower-numbered one: disabled whenever the other one is.
template <class Consumer>
base::IndexedBy<Consumer, bool> dominated_consumers(const base::OwnedList<Consumer>& consumers);

}  // namespace vorel::reach
