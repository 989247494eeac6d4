// synthesis/state_sets.h - the reachable states, projected on a support, by what a signal does.
// Here:      enumeration of codes in regions of a signal, arcs between codes.
// Not here:  which supports there are (synthesis/support_search.h).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "synthesis/function_phase.h"
#include "synthesis/state_formula.h"
#include "synthesis/support_search.h"
#include "toolkit/cover.h"

namespace vorel {

// From a code to the code after one edge of a signal of the support.
using CodeArc = std::pair<Cube, Cube>;

// Covers over the signals of a support, in ascending order: position i is the i-th of them.
struct StateSets {
  Cover on, off;                   // where the function is true, where it is false
  std::vector<CodeArc> arcs;       // within the region where the signal is stable; standard-C only
  std::array<Cover, 4> four_sets;  // ER+, QR+, ER-, QR-; for the style that keeps them
};

class StateSetSearch {
 public:
  StateSetSearch(const StateStructure& structure, const Params& params, SynthesisStyle style)
      : states_{structure, params, 1}, style_{style} {}

  // The support must be one of the function. Incomplete after a reported error.
  StateSets collect(std::uint32_t signal, FunctionPhase phase, const SignalList& support);

  std::uint64_t solve_calls() const { return solve_calls_; }

 private:
  using Visit = std::function<void(const Cube& code, Region region)>;

  // Each code of a state that satisfies the clauses of the groups, once; those visited before with
  // the same `blocked` group are left out.
  void enumerate(std::uint32_t signal, const SignalList& support, ClauseGroup blocked,
                 const Visit& visit);
  void collect_all(std::uint32_t signal, const SignalList& support, StateSets& sets);
  void collect_four_sets(std::uint32_t signal, const SignalList& support, StateSets& sets);
  void collect_excited_and_opposite(std::uint32_t signal, FunctionPhase phase,
                                    const SignalList& support, StateSets& sets);
  void collect_arcs(std::uint32_t signal, FunctionPhase phase, const SignalList& support,
                    StateSets& sets);
  Cube code_of_model(const SignalList& support);
  // The clause that excludes the code of the model, without what is undefined in it.
  Lits other_code(const SignalList& support);
  bool solve();

  StateFormula states_;
  const SynthesisStyle style_;
  std::uint64_t solve_calls_ = 0;
};

}  // namespace vorel
