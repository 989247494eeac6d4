// verify/circuit_game.h - circuit and STG step by step, in one state at hand.
// Here:      which steps there are, what gates and the STG say of a state; without a prefix,
//            clauses or cubes of functions.
// Not here:  the same for all states at once (verify/marking_formula.h), which it checks.
#pragma once

#include <compare>
#include <cstddef>
#include <optional>
#include <vector>

#include "net/net.h"
#include "verify/circuit.h"
#include "verify/composition.h"

namespace vorel::verify {

struct GameState {
  std::vector<bool> marking;  // by place of the STG
  std::vector<bool> values;   // by wire

  auto operator<=>(const GameState&) const = default;
};

// Refers to the composition for names of things only: what the signals, wires and gates are.
class CircuitGame {
 public:
  explicit CircuitGame(const Composition& composition) : composition_{composition} {}

  GameState initial_state() const;
  bool is_excited(std::size_t gate, const GameState& state) const;
  bool is_enabled(const net::StgTransition& transition, const GameState& state) const;
  // The wire is no signal, or the STG lets it change, perhaps after silent transitions.
  bool is_change_allowed(WireId wire, const GameState& state) const;

  // False, and nothing changed, if circuit and STG do not do this in the state.
  bool make(const Move& move, GameState& state) const;
  // The opposite of a move that has been made, with nothing after it that depends on it.
  void undo(const Move& move, GameState& state) const;

  // Whether gates and silent transitions alone can lead to what is awaited. Explores state by
  // state; nothing beyond the bound.
  std::optional<bool> can_come_by_gates(const Awaited& awaited, const GameState& state,
                                        std::size_t max_states) const;

 private:
  const net::Stg& stg() const { return composition_.stg(); }
  const Circuit& circuit() const { return composition_.circuit(); }

  const Composition& composition_;
};

}  // namespace vorel::verify
