#include "verify/composition.h"

#include <algorithm>
#include <cassert>
#include <string>

#include "net/check.h"

namespace vorel::verify {
namespace {

std::uint32_t narrow(std::size_t number) { return static_cast<std::uint32_t>(number); }

// Whether an edge of the sign can take the signal to the value.
bool may_lead_to(net::Sign sign, bool value) {
  return sign == net::Sign::toggle || (sign == net::Sign::plus) == value;
}

}  // namespace

Composition::Composition(const net::Stg& stg, const CircuitFunctions& functions)
    : stg_{stg}, functions_{functions}, wire_of_signal_(stg.signals.size()) {
  for (std::size_t w = 0; w < circuit().wires.size(); ++w)
    if (const auto signal = circuit().wires[w].signal)
      wire_of_signal_[signal->value] = WireId{narrow(w)};
  number_places();
  add_moves();
}

const net::Signal* Composition::signal_of(WireId wire) const {
  const auto signal = circuit().wires[wire.value].signal;
  return signal ? &base::element(stg_.signals, *signal) : nullptr;
}

void Composition::number_places() {
  std::size_t next = stg_.places.size();
  for (std::size_t w = 0; w < circuit().wires.size(); ++w) {
    const WireId wire{narrow(w)};
    // A wire that nobody reads has a value, too.
    const std::size_t copies = std::max<std::size_t>(1, functions_.readers(wire).size());
    first_place_.push_back(narrow(next));
    copies_.push_back(narrow(copies));
    next += 2 * copies;
    for (std::size_t i = 0; i < copies; ++i)
      for (const bool value : {false, true}) meaning_.push_back({wire, value});
  }
  place_count_ = next;
}

std::uint32_t Composition::value_place(WireId wire, bool value) const {
  return first_place_[wire.value] + (value ? 1 : 0);
}

void Composition::add_moves() {
  for (const auto& transition : stg_.transitions) {
    const net::Signal& signal = *transition->signal;
    const auto wire = wire_of(signal);
    if (wire && functions_.driver(*wire) != no_gate) continue;
    assert(!wire || signal.kind == net::SignalKind::input);
    for (const bool value : {false, true})
      if (wire && may_lead_to(transition->sign, value))
        add_move({wire, value, transition.get(), no_gate}, {});
    if (!wire) add_move({std::nullopt, false, transition.get(), no_gate}, {});
  }
  for (std::size_t gate = 0; gate < circuit().gates.size(); ++gate) add_gate_moves(gate);
}

void Composition::add_gate_moves(std::size_t gate) {
  const WireId wire = circuit().gates[gate].output;
  const net::Signal* const signal = signal_of(wire);
  for (const bool value : {false, true}) {
    const bdd::SupportCover cubes = functions_.cubes(gate, value);
    for (std::size_t c = 0; c < cubes.cover.size(); ++c) {
      const auto read = places_read(gate, cubes, c);
      if (signal == nullptr) add_move({wire, value, nullptr, gate}, read);
      for (const auto& transition : stg_.transitions)
        if (transition->signal == signal && may_lead_to(transition->sign, value))
          add_move({wire, value, transition.get(), gate}, read);
    }
  }
}

std::vector<std::uint32_t> Composition::places_read(std::size_t gate,
                                                    const bdd::SupportCover& cubes,
                                                    std::size_t cube) const {
  std::vector<std::uint32_t> places;
  for (std::size_t i = 0; i < cubes.support.size(); ++i) {
    const toolkit::Ternary literal = cubes.cover[cube][i];
    if (literal == toolkit::Ternary::dash) continue;
    const WireId wire{cubes.support[i]};
    const auto readers = functions_.readers(wire);
    const auto copy = std::ranges::find(readers, gate) - readers.begin();
    assert(static_cast<std::size_t>(copy) < readers.size() && "a gate reads its inputs");
    places.push_back(value_place(wire, literal == toolkit::Ternary::one) +
                     2 * static_cast<std::uint32_t>(copy));
  }
  return places;
}

void Composition::add_move(const Move& move, const std::vector<std::uint32_t>& read_places) {
  std::vector<std::uint32_t> preset = read_places, postset = read_places;
  if (move.transition != nullptr) {
    for (const auto* place : move.transition->preset) preset.push_back(place->index);
    for (const auto* place : move.transition->postset) postset.push_back(place->index);
  }
  if (move.wire) {
    for (std::uint32_t i = 0; i < copies_[move.wire->value]; ++i) {
      preset.push_back(value_place(*move.wire, !move.rises) + 2 * i);
      postset.push_back(value_place(*move.wire, move.rises) + 2 * i);
    }
  }
  std::ranges::sort(preset);
  std::ranges::sort(postset);
  assert(std::ranges::adjacent_find(preset) == preset.end());
  assert(std::ranges::adjacent_find(postset) == postset.end());
  moves_.push_back(move);
  presets_.push_back(std::move(preset));
  postsets_.push_back(std::move(postset));
}

std::vector<bool> Composition::initial_marking() const {
  std::vector<bool> marking(place_count_);
  for (const auto& place : stg_.places) marking[place->index] = place->initial_marking > 0;
  for (std::uint32_t p = narrow(stg_.places.size()); p < place_count_; ++p) {
    const WireValue meaning = wire_value(p);
    marking[p] = circuit().wires[meaning.wire.value].initial_value == meaning.value;
  }
  return marking;
}

net::Net Composition::make_net() const {
  net::Net net;
  const std::vector<bool> marking = initial_marking();
  for (std::uint32_t p = 0; p < place_count_; ++p) {
    net::Place& place = base::append_new(net.places);
    if (is_stg_place(p)) {
      place.name = stg_.places[p]->name;
      place.initial_marking = stg_.places[p]->initial_marking;
    } else {
      const WireValue meaning = wire_value(p);
      place.name = circuit().wires[meaning.wire.value].name + (meaning.value ? "=1" : "=0");
      place.initial_marking = marking[p] ? 1 : 0;
    }
  }
  for (std::size_t m = 0; m < moves_.size(); ++m) {
    net::Transition& transition = base::append_new(net.transitions);
    const Move& move = moves_[m];
    transition.name = move.transition != nullptr
                          ? move.transition->name
                          : circuit().wires[move.wire->value].name + (move.rises ? "+" : "-");
    for (const std::uint32_t p : presets_[m]) net::add_arc(*net.places[p], transition);
    for (const std::uint32_t p : postsets_[m]) net::add_arc(transition, *net.places[p]);
  }
  net::sort_adjacency(static_cast<net::NetOf<net::Transition>&>(net));
  net::check(net);
  return net;
}

}  // namespace vorel::verify
