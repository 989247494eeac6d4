// reachlang/predicate_encoding.h - a property as clauses over one configuration.
// Here:      the gates of the connectives, the property as a constraint.
// Not here:  the normal form (reachlang/expansion.h), what the atoms mean
//            (configuration/state_literals.h).
#pragma once

#include <optional>
#include <vector>

#include "configuration/state_literals.h"
#include "reachlang/expansion.h"
#include "sat/alternatives.h"

namespace vorel::reachlang {

struct EncodedPredicate {
  NormalForm normal;
  // One of them is true in each model; none if that is not known of any.
  std::vector<sat::Alternative> alternatives;
};

// Asserts the property of the state, in the group of its literals. A constant property is told of
// on the standard output. Returns what was asserted; empty after a reported error.
template <net::Process P>
std::optional<EncodedPredicate> encode_predicate(const ReachExpr& property,
                                                 configuration::StateLiterals<P>& state);

}  // namespace vorel::reachlang
