#include "verify/faults.h"

#include <algorithm>
#include <cassert>

namespace vorel::verify {

std::vector<bool> marking_of(const Composition& composition, const GameState& state) {
  std::vector<bool> marking(composition.place_count());
  for (std::uint32_t p = 0; p < marking.size(); ++p) {
    if (composition.is_stg_place(p)) {
      marking[p] = state.marking[p];
    } else {
      const auto meaning = composition.wire_value(p);
      marking[p] = state.values[meaning.wire.value] == meaning.value;
    }
  }
  return marking;
}

bool FaultFinder::is_let_through(std::size_t gate, const Move& move,
                                 const GameState& before) const {
  if (move.gate == no_gate) return false;
  const WireId loser = composition_.circuit().gates[gate].output;
  const auto is_pair = [&](const auto& pair) {
    return pair == std::pair(loser, *move.wire) || pair == std::pair(*move.wire, loser);
  };
  if (std::ranges::any_of(composition_.circuit().mutexes, is_pair)) return true;
  if (composition_.signal_of(loser) == nullptr || move.transition == nullptr) return false;
  GameState after = before;
  return game_.is_change_allowed(loser, before) && game_.make(move, after) &&
         !game_.is_change_allowed(loser, after);
}

bool FaultFinder::loses_excitation(std::size_t gate, const Move& move,
                                   const GameState& state) const {
  if (gate == move.gate || !game_.is_excited(gate, state)) return false;
  GameState after = state;
  return game_.make(move, after) && !game_.is_excited(gate, after);
}

bool FaultFinder::is_arbitration(WireId loser, WireId winner, const GameState& state) const {
  const std::size_t gate = composition_.functions().driver(loser);
  return std::ranges::any_of(composition_.moves(), [&](const Move& move) {
    return move.wire == winner && loses_excitation(gate, move, state) &&
           is_let_through(gate, move, state);
  });
}

bool FaultFinder::is_dead(const GameState& state) const {
  for (std::size_t gate = 0; gate < composition_.circuit().gates.size(); ++gate)
    if (game_.is_excited(gate, state)) return false;
  return std::ranges::none_of(composition_.moves(), [&](const Move& move) {
    GameState after = state;
    return move.gate == no_gate && game_.make(move, after);
  });
}

bool FaultFinder::is_fault(const Fault& fault, const GameState& state, bool is_persistent,
                           std::size_t max_markings) const {
  const std::size_t gate = composition_.functions().driver(fault.wire);
  const bool is_signal = composition_.signal_of(fault.wire) != nullptr;
  switch (fault.question) {
    case Question::initial_state:
      return game_.is_excited(gate, state) &&
             !(is_signal && game_.is_change_allowed(fault.wire, state));
    case Question::conformance:
      return game_.is_excited(gate, state) && !game_.is_change_allowed(fault.wire, state);
    case Question::hazard:
      return loses_excitation(gate, *fault.move, state) &&
             !is_let_through(gate, *fault.move, state);
    case Question::progress:
      return is_signal && game_.is_change_allowed(fault.wire, state) &&
             runs_.run_to_edge({fault.wire, fault.waits_for_arbiter},
                               marking_of(composition_, state), is_persistent, max_markings)
                     .outcome == RunOutcome::never;
    case Question::deadlock:
      return is_signal && game_.is_change_allowed(fault.wire, state) && is_dead(state);
  }
  return false;
}

std::optional<Fault> FaultFinder::find(Question question, const GameState& state) const {
  assert(question != Question::progress);
  if (question == Question::hazard) {
    for (const Move& move : composition_.moves()) {
      if (!move.wire) continue;
      for (const std::size_t gate : composition_.functions().readers(*move.wire)) {
        const Fault fault{question, composition_.circuit().gates[gate].output, &move};
        if (is_fault(fault, state)) return fault;
      }
    }
    return std::nullopt;
  }
  for (const Gate& gate : composition_.circuit().gates) {
    const Fault fault{question, gate.output};
    if (is_fault(fault, state)) return fault;
  }
  return std::nullopt;
}

std::string FaultFinder::gate_text(WireId output) const {
  const Gate& gate = composition_.circuit().gates[composition_.functions().driver(output)];
  std::string text = "gate " + gate.name;
  if (gate.line != 0) text += " (line " + std::to_string(gate.line) + ")";
  return text;
}

std::string FaultFinder::message(const Fault& fault, const GameState& state) const {
  const auto edge = [&](WireId wire) {
    return composition_.circuit().wires[wire.value].name + (state.values[wire.value] ? "-" : "+");
  };
  const std::string gate = gate_text(fault.wire);
  switch (fault.question) {
    case Question::initial_state:
      return gate + " is not at rest initially: it is about to make " + edge(fault.wire);
    case Question::conformance:
      return gate + " makes " + edge(fault.wire) + " where the STG does not allow it";
    case Question::hazard:
      return gate + " is about to make " + edge(fault.wire) + ", and is not any more after " +
             edge(*fault.move->wire);
    case Question::progress:
      return edge(fault.wire) + " is due, and " + gate + " never makes it without another input";
    case Question::deadlock:
      return "everything stops where the STG lets " + gate + " make " + edge(fault.wire);
  }
  return "";
}

std::optional<TraceEdge> FaultFinder::last_edge(const Fault& fault, const GameState& state) const {
  if (fault.question == Question::conformance)
    return TraceEdge{fault.wire, !state.values[fault.wire.value]};
  if (fault.question == Question::hazard) return TraceEdge{*fault.move->wire, fault.move->rises};
  return std::nullopt;
}

}  // namespace vorel::verify
