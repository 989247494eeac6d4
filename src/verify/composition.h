// verify/composition.h - a circuit and the STG that is its environment, as one net.
// Here:      the net, and what its places and transitions stand for.
// Not here:  its unfolding and the questions (verify/verifier.h).
//
// The net has the places of the STG and, for each wire, places for its values 0 and 1. A gate that
// reads a wire consumes the token of the value and puts it back; so that readers do not disturb
// each other, there is a copy of the two places for each gate that reads the wire, and an edge of
// the wire changes all copies. An edge of an output takes the preset of a transition of the STG and
// what a cube of the gate's function mentions; where the STG lets no edge happen there is none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "net/net.h"
#include "verify/circuit_functions.h"

namespace vorel::verify {

// What a transition of the net does: an edge of a wire or, without one, a silent step of the STG.
struct Move {
  std::optional<WireId> wire;
  bool rises = false;
  const net::StgTransition* transition = nullptr;  // null: an edge of a wire that is no signal
  std::size_t gate = no_gate;                      // that fires; the others are the environment's
};

// An output that is due. Where an arbiter decides about it, another may come instead, and that it
// is due no more is as good as its edge. No other output lets itself be replaced, even if the STG
// has a choice.
struct Awaited {
  WireId wire;
  bool waits_for_arbiter = false;
};

// Refers to the STG and the functions, which must outlive it.
class Composition {
 public:
  Composition(const net::Stg& stg, const CircuitFunctions& functions);

  const net::Stg& stg() const { return stg_; }
  const CircuitFunctions& functions() const { return functions_; }
  const Circuit& circuit() const { return functions_.circuit(); }

  // Dummies, and internal signals that have no wire.
  bool is_silent(const net::Signal& signal) const { return !wire_of(signal); }
  std::optional<WireId> wire_of(const net::Signal& signal) const {
    return wire_of_signal_[signal.index];
  }
  // Its signal, or null.
  const net::Signal* signal_of(WireId wire) const;

  // A new net each time.
  net::Net make_net() const;

  std::size_t place_count() const { return place_count_; }
  // Places of the STG have their numbers in the net as well.
  bool is_stg_place(std::uint32_t place) const { return place < stg_.places.size(); }
  // One of the copies.
  std::uint32_t value_place(WireId wire, bool value) const;
  // Of a place that is none of the STG's.
  struct WireValue {
    WireId wire;
    bool value;
  };
  WireValue wire_value(std::uint32_t place) const { return meaning_[place - stg_.places.size()]; }

  // By number of the transition.
  const std::vector<Move>& moves() const { return moves_; }
  // The places that a transition takes tokens from and puts tokens on, ascending.
  const std::vector<std::uint32_t>& preset(std::size_t move) const { return presets_[move]; }
  const std::vector<std::uint32_t>& postset(std::size_t move) const { return postsets_[move]; }
  // By place.
  std::vector<bool> initial_marking() const;

 private:
  void number_places();
  void add_moves();
  void add_gate_moves(std::size_t gate);
  void add_move(const Move& move, const std::vector<std::uint32_t>& read_places);
  std::vector<std::uint32_t> places_read(std::size_t gate, const bdd::SupportCover& cubes,
                                         std::size_t cube) const;

  const net::Stg& stg_;
  const CircuitFunctions& functions_;
  std::vector<std::optional<WireId>> wire_of_signal_;
  std::vector<std::uint32_t> first_place_, copies_;  // by wire; copy i of value v: first + 2 i + v
  std::vector<WireValue> meaning_;                   // by place, those of the STG left out
  std::size_t place_count_ = 0;
  std::vector<Move> moves_;
  std::vector<std::vector<std::uint32_t>> presets_, postsets_;
};

}  // namespace vorel::verify
