// decomposition/subfunction.h - a function that a decomposition leaves to something else.
// Here:      what is known of how it could be had.
// Not here:  the decomposition (decomposition/deco.h), finding a gate or an insertion for it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "bdd/bdd.h"
#include "bdd/bdd_structure.h"
#include "decomposition/gate_match.h"

namespace vorel::decomposition {

// What the choice among decompositions asks of the insertion of a new signal.
struct ChosenInsertion {
  // Then the new signal delays nothing but the signal that it was made for.
  bool is_local() const { return ack_count == 1; }

  // The new signal is the function in all states; else its own function is one that is not known
  // before it has been inserted.
  bool expected_implementation = true;
  std::uint64_t cost = 0;       // as the cost coefficients weigh it
  std::uint64_t ack_count = 0;  // signals that acknowledge the new one
  std::string text;
};

struct Subfunction {
  explicit Subfunction(bdd::Bdd of) : function{std::move(of)} {}

  bool is_gate() const { return match.exists(); }
  bool is_constant() const { return function.is_constant(); }
  bool is_literal() const { return bdd::is_literal(function); }
  bool is_trivial() const { return is_constant() || is_literal(); }
  bool has_local_insertion() const { return insertion && insertion->is_local(); }
  // Nothing remains to be decomposed in it. What is known of the function says nothing of a signal
  // that does not compute it.
  bool is_settled() const {
    if (is_literal()) return true;
    if (insertion && !insertion->expected_implementation) return false;
    return is_gate() || has_local_insertion();
  }
  // Signals other than the first that have to wait for the new one; 0 without an insertion.
  std::uint64_t extra_acks() const {
    return insertion && insertion->ack_count > 0 ? insertion->ack_count - 1 : 0;
  }

  bdd::Bdd function;
  GateMatch match;                           // with variables as in the function
  std::optional<ChosenInsertion> insertion;  // the best one
};

}  // namespace vorel::decomposition
