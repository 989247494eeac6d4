// verify/faults.h - what can be wrong with a circuit in one state at hand.
// Here:      finding it, asking whether it is still so in another state, telling it in words.
// Not here:  the search for states (verify/state_questions.h, verify/progress_check.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "verify/circuit_game.h"
#include "verify/gate_runs.h"
#include "verify/verification.h"

namespace vorel::verify {

struct Fault {
  Question question;
  WireId wire;                     // as in Finding
  const Move* move = nullptr;      // of a hazard: what takes the excitation away
  bool waits_for_arbiter = false;  // of progress
};

class FaultFinder {
 public:
  FaultFinder(const Composition& composition, const EdgePresets& presets)
      : composition_{composition}, game_{composition}, runs_{composition, presets} {}

  const CircuitGame& game() const { return game_; }
  const GateRuns& runs() const { return runs_; }

  // The first in the state; of progress the caller has to name the wire.
  std::optional<Fault> find(Question question, const GameState& state) const;
  // Of progress: only where it is certain. Gates that are persistent never take away what another
  // is about to do; for others as many markings are explored (verify/gate_runs.h).
  bool is_fault(const Fault& fault, const GameState& state, bool is_persistent = false,
                std::size_t max_markings = GateRuns::usual_max_markings) const;
  // What the gate loses to the move is what it may lose: a mutual exclusion element was declared,
  // or the STG itself lets the one edge happen or the other.
  bool is_let_through(std::size_t gate, const Move& move, const GameState& before) const;
  // Whether some gate loses its excitation to one that may take it, of two given wires.
  bool is_arbitration(WireId loser, WireId winner, const GameState& state) const;

  std::string message(const Fault& fault, const GameState& state) const;
  // The edge after the state that goes wrong, if the fault is one.
  std::optional<TraceEdge> last_edge(const Fault& fault, const GameState& state) const;

 private:
  bool loses_excitation(std::size_t gate, const Move& move, const GameState& state) const;
  bool is_dead(const GameState& state) const;
  std::string gate_text(WireId output) const;

  const Composition& composition_;
  const CircuitGame game_;
  const GateRuns runs_;
};

// By place of the composition.
std::vector<bool> marking_of(const Composition& composition, const GameState& state);

}  // namespace vorel::verify
