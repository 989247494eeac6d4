// resolution/transformation_cost.h - what a transformation costs, as numbers.
// Here:      the numbers and what each of them weighs; their sum, their text.
// Not here:  what the numbers of a transformation are (resolution/cost_formula.h,
//            resolution/reduction_cost.h).
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "base/params.h"
#include "resolution/transformation.h"

namespace vorel::resolution {

// A number, or a total, that nobody has evaluated. It loses every comparison.
inline constexpr std::uint64_t unknown_cost = std::numeric_limits<std::uint64_t>::max();

// Next to one transition, on its way to or from some places.
bool is_sequential(const net::Insertion& insertion);

// What one unit of each number weighs. A number with the weight 0 is not computed anywhere.
struct CostCoefficients {
  std::uint32_t csc_cores = 0;
  std::uint32_t usc_cores = 0;
  std::uint32_t delay = 0;
  std::uint32_t logic = 0;
  std::uint32_t seq_insertions = 0;
  std::uint32_t conc_insertions = 0;
  std::uint32_t non_locked_signals = 0;
  bool pwr_of_2 = false;  // a signal with n triggers counts 2^n in `logic`, not n
  // Reductions are compared with insertions: signals that are not locked count from zero, not from
  // those of the STG before the step.
  bool use_concurrency_reduction = false;

  static CostCoefficients of(const base::Params& params);
};

// The numbers that need no encoding conflicts.
struct TransformationCost {
  TransformationCost(const CostCoefficients& weights, StgTransformation applied);

  // Insertions in sequence with others and concurrent ones; for a reduction the number of sources,
  // and none.
  std::uint64_t seq_count() const;
  std::uint64_t conc_count() const;
  bool is_insertion() const { return std::holds_alternative<SignalInsertion>(transformation); }

  // Wraps like any sum of unsigned numbers; unknown_cost if a number is unknown.
  std::uint64_t total() const;
  // "2*1[delay] + 1*15[log_compl] + ...".
  std::string text() const;

  CostCoefficients coefficients;
  std::uint64_t delay = unknown_cost;       // new edges that delay a critical event
  std::uint64_t logic = unknown_cost;       // triggers of output and internal signals
  std::uint64_t non_locked = unknown_cost;  // pairs of signals that are not locked, weighted
  StgTransformation transformation;
};

// A step of the resolution of encoding conflicts: those that remain count, too.
struct ResolutionCost : TransformationCost {
  using TransformationCost::TransformationCost;

  std::uint64_t total() const;
  // "8*1[csc] + 4*0[usc] + 2*1[delay] + ...".
  std::string text() const;

  std::uint64_t csc_cores = unknown_cost;
  std::uint64_t usc_cores = unknown_cost;
};

}  // namespace vorel::resolution
