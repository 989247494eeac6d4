// configuration/implied_conflicts.h - which conflicts between events go without saying.
// Here:      conditions whose at-most-one constraint is implied by that of another condition.
// Not here:  the constraints (configuration/configuration_encoding.h).
#pragma once

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::configuration {

// The conditions whose at-most-one constraint says nothing new: fewer than two consumers that are
// not cut-offs, or all of these also consume another condition that is kept.
template <net::Process P>
base::IndexedBy<typename P::Condition, bool> skippable_conditions(const P& process);

// The same with producers in the place of consumers. Merged processes only.
template <net::Process P>
base::IndexedBy<typename P::Condition, bool> implied_backward_conflicts(const P& process);

}  // namespace vorel::configuration
