#include "verify/circuit_game.h"

#include <algorithm>
#include <cassert>
#include <set>

namespace vorel::verify {
namespace {

void fire(const net::StgTransition& transition, std::vector<bool>& marking) {
  for (const auto* place : transition.preset) marking[place->index] = false;
  for (const auto* place : transition.postset) marking[place->index] = true;
}

bool is_enabled_in(const net::StgTransition& transition, const std::vector<bool>& marking) {
  return std::ranges::all_of(transition.preset, [&](const auto* p) { return marking[p->index]; });
}

// States still to be looked at, each once.
template <class State>
class Exploration {
 public:
  explicit Exploration(const State& first) { add(first); }

  void add(const State& state) {
    if (seen_.insert(state).second) open_.push_back(state);
  }
  bool is_done() const { return open_.empty(); }
  State take() {
    State state = std::move(open_.back());
    open_.pop_back();
    return state;
  }
  std::size_t size() const { return seen_.size(); }

 private:
  std::set<State> seen_;
  std::vector<State> open_;
};

}  // namespace

GameState CircuitGame::initial_state() const {
  GameState state;
  for (const auto& place : stg().places) state.marking.push_back(place->initial_marking > 0);
  for (const Wire& wire : circuit().wires) state.values.push_back(wire.initial_value);
  return state;
}

bool CircuitGame::is_excited(std::size_t gate, const GameState& state) const {
  const Gate& g = circuit().gates[gate];
  std::vector<int> inputs;
  for (const WireId input : g.inputs) inputs.push_back(state.values[input.value] ? 1 : 0);
  const bool output = state.values[g.output.value];
  inputs.push_back(output ? 1 : 0);
  return g.function.evaluate(inputs) != output;
}

bool CircuitGame::is_enabled(const net::StgTransition& transition, const GameState& state) const {
  return is_enabled_in(transition, state.marking);
}

bool CircuitGame::is_change_allowed(WireId wire, const GameState& state) const {
  const net::Signal* const signal = composition_.signal_of(wire);
  if (signal == nullptr) return true;
  Exploration<std::vector<bool>> exploration(state.marking);
  while (!exploration.is_done()) {
    const std::vector<bool> marking = exploration.take();
    for (const auto& transition : stg().transitions) {
      if (!is_enabled_in(*transition, marking)) continue;
      if (transition->signal == signal) return true;
      if (!composition_.is_silent(*transition->signal)) continue;
      std::vector<bool> next = marking;
      fire(*transition, next);
      exploration.add(next);
    }
  }
  return false;
}

bool CircuitGame::make(const Move& move, GameState& state) const {
  const net::StgTransition* const transition = move.transition;
  if (transition != nullptr && !is_enabled(*transition, state)) return false;
  if (move.wire) {
    if (state.values[move.wire->value] == move.rises) return false;
    const net::Signal* const signal = composition_.signal_of(*move.wire);
    if ((transition == nullptr ? nullptr : transition->signal) != signal) return false;
    const std::size_t gate = composition_.functions().driver(*move.wire);
    if (gate != no_gate && !is_excited(gate, state)) return false;
    state.values[move.wire->value] = move.rises;
  } else if (transition == nullptr || !composition_.is_silent(*transition->signal)) {
    return false;
  }
  if (transition != nullptr) fire(*transition, state.marking);
  return true;
}

void CircuitGame::undo(const Move& move, GameState& state) const {
  if (move.wire) {
    assert(state.values[move.wire->value] == move.rises);
    state.values[move.wire->value] = !move.rises;
  }
  if (move.transition == nullptr) return;
  for (const auto* place : move.transition->postset) state.marking[place->index] = false;
  for (const auto* place : move.transition->preset) state.marking[place->index] = true;
}

std::optional<bool> CircuitGame::can_come_by_gates(const Awaited& awaited, const GameState& state,
                                                   std::size_t max_states) const {
  Exploration<GameState> exploration(state);
  while (!exploration.is_done()) {
    if (exploration.size() > max_states) return std::nullopt;
    const GameState here = exploration.take();
    if (awaited.waits_for_arbiter && !is_change_allowed(awaited.wire, here)) return true;
    for (const Move& move : composition_.moves()) {
      if (move.wire && move.gate == no_gate) continue;
      GameState next = here;
      if (!make(move, next)) continue;
      if (move.wire == awaited.wire) return true;
      exploration.add(next);
    }
  }
  return false;
}

}  // namespace vorel::verify
