// reachlang/predicate_encoding.h - a property as clauses over one configuration.
// Here:      what the atoms mean, the gates of the connectives, the property as a constraint.
// Not here:  the normal form (reachlang/expansion.h), what a configuration is
//            (configuration/configuration_encoding.h).
#pragma once

#include <optional>

#include "configuration/configuration_vars.h"
#include "reachlang/expansion.h"

namespace vorel::reachlang {

// Asserts the property of the final state of the configuration. With `via_dummies`, what becomes
// enabled after dummies alone counts as enabled; only prefixes of STGs have dummies. A constant
// property is told of on the standard output. Returns what was asserted; empty after a reported
// error.
template <net::Process P>
std::optional<NormalForm> encode_predicate(const ReachExpr& property, const P& process,
                                           configuration::ConfigurationVars<P>& vars,
                                           bool via_dummies, sat::ClauseGroup group);

}  // namespace vorel::reachlang
