// synthesis/state_sets.h - the reachable states, projected on a support, by what a signal does.
// Here:      enumeration of codes in regions of a signal, arcs between codes.
// Not here:  which supports there are (synthesis/support_search.h).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "configuration/state_formula.h"
#include "synthesis/function_phase.h"
#include "toolkit/cover.h"

namespace vorel::synthesis {

// From a code to the code after one edge of a signal of the support.
using CodeArc = std::pair<toolkit::Cube, toolkit::Cube>;

// Covers over the signals of a support.
struct StateSets {
  toolkit::Cover on, off;     // where the function is true, where it is false
  std::vector<CodeArc> arcs;  // within the region where the signal is stable; standard-C only
  std::array<toolkit::Cover, 4> four_sets;  // ER+, QR+, ER-, QR-; for the style that keeps them
};

class StateSetSearch {
 public:
  static constexpr std::size_t usual_max_codes = 1000;

  StateSetSearch(const configuration::StateStructure<net::StgPrefix>& structure,
                 const configuration::EncodingOptions& options, SynthesisStyle style,
                 std::size_t max_codes = usual_max_codes)
      : states_{structure, options, 1}, style_{style}, max_codes_{max_codes} {}

  // The support must be one of the function. Incomplete after a reported error. Up to max_codes
  // codes are listed one by one; of a function with more, ON, OFF and the four sets are cubes that
  // have been expanded as far as no state speaks against it, and there are no arcs: then a function
  // of standard-C is false wherever its signal is stable. Each reachable code is in exactly one of
  // the four sets (in that of an excited state, if there is one), and no two of their cubes meet.
  StateSets collect(const ProjectedFunction& projected);

  std::uint64_t solve_calls() const { return solve_calls_; }

 private:
  using Visit = std::function<void(const toolkit::Cube& code, configuration::Region region)>;
  using Constraint = std::function<void(sat::ClauseGroup)>;

  // Each code of a state that satisfies the clauses of the groups, once; those visited before with
  // the same `blocked` group are left out. False when there are too many.
  bool enumerate(const ProjectedFunction& projected, sat::ClauseGroup blocked, const Visit& visit);
  bool collect_all(const ProjectedFunction& projected, StateSets& sets);
  bool collect_four_sets(const ProjectedFunction& projected, StateSets& sets);
  bool collect_excited_and_opposite(const ProjectedFunction& projected, StateSets& sets);
  bool collect_arcs(const ProjectedFunction& projected, StateSets& sets);
  bool collect_codes(const ProjectedFunction& projected, StateSets& sets);
  void collect_cubes(const ProjectedFunction& projected, StateSets& sets);
  void collect_four_covers(const ProjectedFunction& projected, StateSets& sets);
  // Covers the codes of the states that satisfy `wanted` by cubes without a code of the others,
  // which miss those of the cover. Codes that states with `precedence` have too, if it is given,
  // are left out one by one: they are few as a rule, as they need the signal outside of the
  // support.
  toolkit::Cover cubes_without(const SignalList& support, const Constraint& wanted,
                               const Constraint& others, const toolkit::Cover& taken,
                               const Constraint& precedence = {});
  // Covers the codes of the states that satisfy `wanted` by cubes that miss those of the cover.
  toolkit::Cover cubes_outside(const SignalList& support, const Constraint& wanted,
                               const toolkit::Cover& cover);
  // The code of a state inside the cube that satisfies the constraint.
  std::optional<toolkit::Cube> state_in(const toolkit::Cube& cube, const SignalList& support,
                                        const Constraint& constraint);
  toolkit::Cube code_of_model(const SignalList& support);
  // The clause that excludes the code of the model, without what is undefined in it.
  sat::Lits other_code(const SignalList& support);
  sat::Lits outside_of(const toolkit::Cube& cube, const SignalList& support);
  bool solve();
  StateSets empty_sets(const SignalList& support) const;

  configuration::StateFormula states_;
  const SynthesisStyle style_;
  const std::size_t max_codes_;
  std::size_t codes_left_ = 0;  // to be listed for the current function
  std::uint64_t solve_calls_ = 0;
};

}  // namespace vorel::synthesis
