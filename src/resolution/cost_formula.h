// resolution/cost_formula.h - the cost of the candidates that a step chooses.
// Here:      each number of it as a formula, to be minimised; reading the numbers from a model, and
//            taking them from a choice at hand.
// Not here:  what triggers and locks are (resolution/trigger_formula.h, resolution/lock_formula.h),
//            counting cores (resolution/core_conditions.h), reductions
//            (resolution/reduction_cost.h).
#pragma once

#include <cstdint>
#include <vector>

#include "resolution/core_conditions.h"
#include "resolution/lock_formula.h"
#include "resolution/transformation_cost.h"
#include "sat/core_guided.h"

namespace vorel::resolution {

// Those with an occurrence that delays a critical event.
CandidateList delaying_candidates(const Candidates& candidates);

// What is weighed beside the candidates themselves.
struct CostContext {
  const CostCoefficients& coefficients;
  const CoreCounters& cores;
  // The weight of the pairs of signals that are not locked before the step; part of the cost where
  // reductions are compared with insertions.
  std::uint64_t unlock_number = 0;
};

// What has the coefficient 0 is not built, and counts 0. The literals are defined in both
// directions, but for signals that are not locked: see resolution/lock_formula.h.
class CostFormula {
 public:
  // The literals must be allocated; no two candidates may be chosen that exclude each other. The
  // formula must outlive the object.
  CostFormula(const OccurrenceOrder& order, const Candidates& candidates,
              const CandidateLits& literals, const CostContext& context, sat::CnfFormula& formula,
              sat::ClauseGroup group = sat::PermanentGroup);

  // All that costs something; what does in any case is the weight of LitTrue.
  const std::vector<sat::WeightedLit>& literals() const { return literals_; }

  // Of all signals but dummies, if they are weighed.
  const SignalLits& locked() const { return locked_; }

 private:
  void add_delay(const CandidateLits& literals);
  void add_kinds(const CandidateLits& literals);
  void add_locks(const OccurrenceOrder& order, CandidateGates& gates, std::uint64_t unlock_number);
  void add_each(const sat::Lits& lits, std::uint64_t coefficient);

  const Candidates& candidates_;
  const CostCoefficients coefficients_;
  std::vector<sat::WeightedLit> literals_;
  SignalLits locked_;
};

// The delay, and the cores that are left, of a choice at hand.
void evaluate_choice(const Candidates& candidates, const Choice& chosen, const CoreStore& cores,
                     ResolutionCost& cost);
// The logic, and the signals that are not locked, of the prefix that has the new signal.
void evaluate_result(const net::StgPrefix& prefix, const net::Signal& new_signal,
                     std::uint64_t unlock_number, TransformationCost& cost);

}  // namespace vorel::resolution
