// reachlang/predicate_check.h - a property in the state that a configuration ends in.
// Here:      its value, found by playing the tokens, without any formula.
// Not here:  the clauses that find such a configuration (reachlang/predicate_encoding.h).
#pragma once

#include <span>

#include "net/process.h"
#include "reachlang/expansion.h"

namespace vorel::reachlang {

// Whether the property holds after the events, which make up a configuration. With `via_dummies`,
// what can fire after further dummies counts as enabled.
template <net::Process P>
bool holds_after(const NormalForm& property, const P& process,
                 std::span<const typename P::Event* const> events, bool via_dummies);

// The same; a property that does not hold is reported as an error.
template <net::Process P>
bool check_predicate(const NormalForm& property, const P& process,
                     std::span<const typename P::Event* const> events, bool via_dummies);

}  // namespace vorel::reachlang
