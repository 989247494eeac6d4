// configuration/marking_bounds.h - what the net alone says of the markings of configurations.
// Here:      invariants and traps of a merged process as clauses on its places.
// Not here:  finding them (configuration/place_invariants.h, configuration/local_invariants.h,
//            configuration/token_flow.h).
//
// In a prefix an event brings its whole past with it, and unit propagation finds what follows. In a
// merged process a condition has many pasts; that a counter agrees with what it counts, say, or
// that a process is somewhere, takes the solver a long search. Both are redundant clauses on the
// final marking.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "configuration/local_invariants.h"
#include "configuration/place_invariants.h"
#include "sat/cnf_formula.h"

namespace vorel::configuration {

class MarkingBounds {
 public:
  // The effort bounds the steps of looking for invariants, and again for traps.
  MarkingBounds(TokenFlow flow, std::uint64_t effort)
      : flow_{std::move(flow)}, effort_{effort}, invariants_{place_invariants(flow_, effort)} {}

  const TokenFlow& flow() const { return flow_; }
  std::uint64_t effort() const { return effort_; }
  const std::vector<PlaceInvariant>& invariants() const { return invariants_; }

  // Clauses on one literal for each place, true if it is marked; LitFalse for one that never is.
  void assert_invariants(sat::CnfFormula& formula, const sat::Lits& places) const;

 private:
  const TokenFlow flow_;
  const std::uint64_t effort_;
  const std::vector<PlaceInvariant> invariants_;
};

// Clauses that tell markings with a property apart from those that configurations end in. The
// property is said in clauses on the places of a formula of its own. Markings that it has and the
// invariants allow are asked for, and each is excluded; until none is left, or too much was spent
// for redundant clauses.
class MarkingFilter {
 public:
  using Clause = std::vector<PlaceLiteral>;
  using Encoder = std::function<void(sat::CnfFormula&, const sat::Lits& places)>;

  // Keeps a reference to the bounds.
  MarkingFilter(const MarkingBounds& bounds, const Encoder& property,
                const std::vector<bool>& can_be_marked);

  // Traps that markings leave empty [EM-2000].
  std::vector<Clause> traps();
  // What the invariants of single places say against the markings that traps do not exclude. Takes
  // a hundred times as long.
  std::vector<Clause> local_clauses();

 private:
  using Marking = std::vector<bool>;  // by place

  std::vector<Clause> exclude_markings(const std::function<Clause(const Marking&)>& find);
  Clause trap_against(const Marking& marked);
  Clause local_clause_against(const Marking& marked);

  const MarkingBounds& bounds_;
  sat::CnfFormula formula_;
  sat::Lits places_;
  std::uint64_t trap_steps_, local_steps_;               // left
  std::optional<std::vector<TokenFlow::Places>> parts_;  // with one token, found when needed
  std::vector<LocalInvariants> local_;                   // of the first parts, made when needed
};

}  // namespace vorel::configuration
