// decomposition/boolean_decomposer.h - a function as one gate of simpler functions.
// Here:      the Boolean relation of the functions that a gate's inputs may have [CKKLPY-1999], the
//            choice among the solutions.
// Not here:  the search for solutions (decomposition/brel_solver.h), which alternatives of a signal
//            and which gates are tried.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <unordered_map>
#include <vector>

#include "bdd/bdd_cover.h"
#include "decomposition/literal_counts.h"
#include "toolkit/library_gate.h"

namespace vorel::decomposition {

// One implementation of a signal.
struct DecomposedFunction {
  bdd::BDDCover covers;                       // over the variables of its context
  std::size_t literals = 0;                   // of its equation
  std::optional<std::uint32_t> own_variable;  // that of the signal itself
};

// A gate with its input pins as variables that no function mentions which is decomposed by it.
struct DecomposingGate {
  // Pin i becomes variable first_variable + i.
  DecomposingGate(const toolkit::LibraryGate& gate, std::uint32_t first_variable);

  bdd::BDDCover covers;
  std::vector<bdd::Bdd> pins;  // variables, without the feedback
  bool is_latch;
};

// The functions of the pins, in their order, over the variables of the context. In each state of
// the signal the gate does what the signal does. None is constant or has as many literals as the
// signal; the input of a gate without memory is not the signal itself.
struct BooleanCandidate {
  std::vector<bdd::Bdd> pins;
  double cost = 0;  // literals of the functions that are no literals
};

// Kept for a run.
class BooleanDecomposer {
 public:
  static constexpr std::size_t most_candidates = 5;

  // The counts outlive this.
  explicit BooleanDecomposer(LiteralCounts& literals) : literals_{literals} {}

  // Candidates, at most so many, the cheapest first. No two differ only in the order of pins that
  // the gate does not tell apart. None for a gate without pins.
  std::vector<BooleanCandidate> decompose(const DecomposedFunction& function,
                                          const DecomposingGate& gate);

  // What pins may be where: true if at a code of the signal the pins make the gate do what the
  // signal does there. A code in none of the signal's four sets allows everything.
  static bdd::Bdd characteristic_function(const bdd::BDDCover& function, const bdd::BDDCover& gate);

 private:
  static constexpr double unusable = std::numeric_limits<double>::max();

  // A lower bound will do if it is not below the other one.
  double cost_of(const std::vector<bdd::Bdd>& pins, const DecomposedFunction& function,
                 double bound);
  // Keeps a solution among the candidates if it is better than the last of enough; its cost.
  double offer(const std::vector<bdd::Bdd>& pins, const DecomposedFunction& function,
               const DecomposingGate& gate, std::vector<BooleanCandidate>& candidates);

  // A function of a pin.
  struct PinCost {
    std::size_t least = 0;  // literals: each variable is one at least
    std::optional<std::size_t> literals;
  };
  PinCost& known_cost(const bdd::Bdd& pin);
  std::size_t literal_count(const bdd::Bdd& function);

  LiteralCounts& literals_;
  std::unordered_map<bdd::Bdd, PinCost, bdd::IdentityHash> known_costs_;  // of this relation
};

}  // namespace vorel::decomposition
