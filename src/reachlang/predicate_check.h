// reachlang/predicate_check.h - a property in the state that a configuration ends in.
// Here:      its value, from the token game, without any formula.
// Not here:  the clauses that find such a configuration (reachlang/predicate_encoding.h).
#pragma once

#include "configuration/final_state.h"
#include "reachlang/expansion.h"

namespace vorel::reachlang {

// Whether the property holds in the state.
template <net::Process P>
bool holds_in(const NormalForm& property, const configuration::FinalState<P>& state);

// The same; a property that does not hold is reported as an error.
template <net::Process P>
bool check_predicate(const NormalForm& property, const configuration::FinalState<P>& state);

// The elements chosen for the outermost quantifiers `exists` of a property that holds in the state.
template <net::Process P>
std::vector<BoundVariable> chosen_elements(const ReachExpr& property,
                                           const configuration::FinalState<P>& state);

}  // namespace vorel::reachlang
