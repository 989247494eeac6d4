// sat/core_guided.h - a model of least cost, by raising a lower bound.
// Here:      the cost as a sum of weighted literals, and cores: literals that cannot all be false.
// Not here:  the cost as a binary number (sat/least_cost.h), of which little follows while some of
//            its bits are open.
//
// A core raises the lower bound by its least weight, which its literals lose; that more than one of
// them is true becomes a literal of the cost itself [MDM-2014]. A model in which no literal of the
// cost is true any more is one of the least. Many choices of one cost, among which only counting
// tells that none is better, do not have to be tried one after the other.
//
// There are at most as many cores as the least cost, each for a few solves, which take time in
// proportion to the literals assumed and to what follows from them. So cores are first sought in
// parts of the literals, each by itself; in a formula that is put together of n independent small
// ones, this takes a time that grows with n to the power of 3/2.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "base/deadline.h"
#include "sat/cnf_formula.h"

namespace vorel::sat {

// Costs the weight in models where the literal is true.
struct WeightedLit {
  Lit lit;
  std::uint64_t weight;
};

// The sum of the last model, at most the highest number of 64 bits.
std::uint64_t model_cost(const CnfFormula& formula, std::span<const WeightedLit> cost);

// Looks at the model of the formula. When that is none of what the formula is about, adds clauses
// that exclude it, and says true.
using Refinement = std::function<bool()>;

// The least cost of a model, if it is below `bound`. `record` is called in each model that is
// better than all before, the last time in one of least cost; a literal that nothing forces to be
// true is false there. The clauses that are added to the group say of the models below the best one
// found what is true of them, so the group ends without models: whoever goes on with the formula
// removes it. Nothing and no further calls when the run has failed, or when the deadline is over
// before it is known that no model is better than the last one.
std::optional<std::uint64_t> find_least_cost(CnfFormula& formula, std::span<const WeightedLit> cost,
                                             std::uint64_t bound, ClauseGroup group,
                                             const std::function<void()>& record,
                                             const base::Deadline& deadline = base::Deadline(0),
                                             const Refinement& refine = {});

}  // namespace vorel::sat
