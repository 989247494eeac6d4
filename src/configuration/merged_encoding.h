// configuration/merged_encoding.h - what makes a set of mp-events a configuration, beside the rules
// that a prefix has too. Here:      conditions are produced once, the occurrences of a place are
// used without gaps. Not here:  causality and forward conflicts
// (configuration/configuration_encoding.h), cycles
//            (configuration/acyclicity.h).
//
// With these rules the sets of mp-events are those into which the configurations of the unfolding
// merge [KKKV-2006]: their final markings are reachable. Some of them merge from configurations
// that go on behind a cut-off of the prefix.
#pragma once

#include "configuration/configuration_vars.h"

namespace vorel::configuration {

// At most one producer of a condition fires. Redundant in a merged process of a safe net.
template <net::Process P>
void encode_backward_conflicts(const P& process, ConfigurationVars<P>& vars,
                               sat::ClauseGroup group);

// Nobody produces what is there from the start. Redundant in a merged process of a safe net, where
// no event could.
template <net::Process P>
void encode_initial_conditions(const P& process, ConfigurationVars<P>& vars,
                               sat::ClauseGroup group);

// An occurrence of a place is produced only if the one before it is, and has been consumed. Two
// conditions of one place and depth are an error.
template <net::Process P>
void encode_no_gaps(const P& process, ConfigurationVars<P>& vars, sat::ClauseGroup group);

}  // namespace vorel::configuration
