// decomposition/deco.h - a candidate for how a signal could be decomposed.
// Here:      the gate and the sub-functions, what follows from them alone, the text form.
// Not here:  candidates' costs (decomposition/deco_cost.h), where they come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bdd/bdd_cover.h"
#include "decomposition/alg_decomposition.h"
#include "decomposition/subfunction.h"
#include "toolkit/logic_expr.h"

namespace vorel::decomposition {

enum class DecoKind : std::uint8_t {
  uninitialised = 0,
  boolean = 1,    // a gate of sub-functions
  monotonic = 2,  // a latch of two, SET and RESET
  collapsed = 3,  // any function of the signals and of a new one, for a sub-function
};

struct Deco {
  // For kinds with a gate. Literals need nothing, and beside a latch each driver can be one gate of
  // its own, which the latch acknowledges, unless the signal is to have a single gate. A new signal
  // is needed for all others.
  bool must_be_inserted(const Subfunction& part) const {
    const bool can_be_driver = kind == DecoKind::monotonic && !single_gate;
    return !part.is_trivial() && !(can_be_driver && part.is_gate());
  }
  // Every sub-function is a literal or a constant.
  bool is_trivial() const;
  // Sets `useful`, `directly_implementable` and `chosen` from the gate and the sub-functions, whose
  // matches and insertions are complete.
  void judge();
  const Subfunction* chosen_part() const { return chosen ? &subfunctions[*chosen] : nullptr; }
  // A directly implementable candidate is local, and one whose chosen sub-function delays no other
  // signals.
  bool is_local() const;

  DecoKind kind = DecoKind::uninitialised;
  std::string signal;
  std::uint32_t variable = 0;  // of the signal
  // The equation; SET and RESET of a monotonic one.
  toolkit::LogicExpr function, inverse_function;
  std::size_t literals = 0;  // of the signal's function
  bool single_gate = false;  // with no other gate before or behind it
  // Its inputs are variables i for sub-function i, their complements, or constants. Of a collapsed
  // one only the name is set, to "COLLAPSED"; a monotonic one for which there is no latch has none.
  GateMatch gate;
  // What the gate with its inverters does to the signal, where variable i is sub-function i.
  bdd::BDDCover shape;
  // Of a collapsed one: the signal's function with `placeholder` for the sub-function.
  bdd::Bdd collapsed;
  std::uint32_t placeholder = 0;
  std::vector<Subfunction> subfunctions;  // SET before RESET
  // That is inserted next, if any is: the first by whether it is settled and its insertion local,
  // then by fewest additional acknowledgements, then by the insertion's cost.
  std::optional<std::size_t> chosen;
  bool useful = false;  // whatever must be inserted can be
  bool directly_implementable = false;
  bool degraded = false;  // with the new signal the function has no fewer literals
  double cost = -1.0;     // negative until calculated
};

// The signal's next value, with sub-functions put in place, `replaced` (one of them, or none) and
// its complement by a variable.
bdd::Bdd next_value(const Deco& deco, std::optional<std::size_t> replaced,
                    std::uint32_t replacement);

// A gate with a function on each of its pins.
Deco boolean_deco(const std::string& gate, const bdd::BDDCover& covers,
                  const std::vector<bdd::Bdd>& pins);
// A gate that implements the signal as it is, on inputs that are literals. `shape` is what the
// match does, over the same variables.
Deco matched_deco(const GateMatch& match, const bdd::BDDCover& shape);
// A gate of the two operands of a conjunction or disjunction, matched with variables 0 and 1 for
// them. Where the gate needs the complement of an operand, that is the sub-function.
Deco gate_deco(const AlgDecomposition& decomposition, const GateMatch& match,
               const bdd::BDDCover& shape);
// A latch, matched with variables 0 and 1 for SET and RESET.
Deco monotonic_deco(const bdd::Bdd& set, const bdd::Bdd& reset, const GateMatch& match,
                    const bdd::BDDCover& shape);
// For a collapsed decomposition. No function depends on the placeholder but that around it.
Deco collapsed_deco(const AlgDecomposition& decomposition, std::uint32_t placeholder);

// The signal's function around one of the sub-functions, all else merged into it. Nothing if it
// does not depend on the sub-function. The signal and the literals are taken over; the equation is
// not, of which a monotonic candidate has only SET and RESET.
std::optional<Deco> collapsed_deco(const Deco& deco, std::size_t part, std::uint32_t placeholder);

// "BOOL Deco (5 lits) for [c]=a b + c (a + b)", and what is known of gate, parts and cost. Variable
// v is called names[v]. Marked NICE is what leaves nothing more to be decomposed.
std::string to_string(const Deco& deco, const GateLibrary& library,
                      std::span<const std::string> names = {});

}  // namespace vorel::decomposition
