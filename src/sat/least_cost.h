// sat/least_cost.h - the descent to a model of least cost.
// Here:      the cost as a binary number of literals, lowered bit by bit from the highest.
// Not here:  building the cost (sat/integer_circuit.h), storing solutions: that is a callback.
// A number that is kept from one question to the next, and mostly small: of a high one each bit can
// take a search through all the ways to share it out (sat/core_guided.h).
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "sat/cnf_formula.h"

namespace vorel::sat {

// Solves. With a model, stores the solution in place of the last one, and the values of the bits.
// A failed attempt changes nothing.
using Resolve = std::function<bool(std::span<const Lit> bits, std::vector<bool>& values)>;

// The usual Resolve: `record` stores the solution of the model.
bool resolve_cost(CnfFormula& formula, std::span<const Lit> bits, std::vector<bool>& values,
                  const std::function<void()>& record);

// `values` are those of the bits, lowest first, in the best model so far; they end as those of
// the least cost. Solves at most once for each bit. The bits must be defined in both directions.
// Group 2, which has to be empty before, is left with what was tried last: whoever goes on with
// the formula renews it. Stops early when the run has failed.
void minimise_cost(CnfFormula& formula, std::span<const Lit> bits, std::vector<bool>& values,
                   const Resolve& resolve);

}  // namespace vorel::sat
