#include "flow/stg_states.h"

#include <algorithm>
#include <cassert>

#include "configuration/decoding.h"
#include "sat/integer_circuit.h"

namespace vorel::flow {
namespace {

// For each bit of the length of a trace.
constexpr std::uint64_t conflicts_to_shorten = 20'000;

configuration::EncodingOptions options_of(const sat::CnfParams& params) {
  configuration::EncodingOptions options;
  options.formula = params;
  return options.without_dummy_rules();
}

verify::PlaceSet numbers_of(const base::PtrList<net::StgPlace>& places) {
  verify::PlaceSet numbers;
  for (const net::StgPlace* place : places) numbers.push_back(place->index);
  return numbers;
}

}  // namespace

StgStates::StgStates(const configuration::StateStructure<net::StgPrefix>& structure,
                     const sat::CnfParams& params, bool has_before)
    : structure_{structure},
      has_before_{has_before},
      instance_{structure, options_of(params)},
      enabled_(structure.process().transitions.size()) {
  instance_.add_configuration();
  if (!has_before_) return;
  instance_.add_configuration();
  link_configurations();
}

void StgStates::link_configurations() {
  for (const auto& event : structure_.process().events) {
    if (event->is_cut_off()) continue;
    const sat::Lit now = instance_.configuration(0).event_lit(*event);
    const sat::Lit before = instance_.configuration(1).event_lit(*event);
    formula().add_binary(~before, now, sat::PermanentGroup);
    if (!net::is_dummy(*event)) formula().add_binary(before, ~now, sat::PermanentGroup);
  }
}

sat::Lit StgStates::all_marked(const verify::PlaceSet& places, When when) {
  sat::Lits lits;
  for (const std::uint32_t place : places)
    lits.push_back(state(when).marked(*structure_.process().places[place]));
  return all_of(lits);
}

sat::Lit StgStates::any_marked(const std::vector<verify::PlaceSet>& sets, When when) {
  sat::Lits ways;
  for (const verify::PlaceSet& set : sets) ways.push_back(all_marked(set, when));
  return any_of(ways);
}

sat::Lit StgStates::enabled(const net::StgTransition& transition) {
  sat::Lit& lit = enabled_[transition];
  if (!lit.is_uninit()) return lit;
  if (structure_.instances().events_of(base::id_of(transition)).empty()) return lit = sat::LitFalse;
  return lit = all_marked(numbers_of(transition.preset), When::now);
}

sat::Lit StgStates::all_of(const sat::Lits& lits) {
  return formula().make_gate(sat::Gate(sat::GateAnd, lits), sat::PermanentGroup);
}

sat::Lit StgStates::any_of(const sat::Lits& lits) {
  return formula().make_gate(sat::Gate(sat::GateOr, lits), sat::PermanentGroup);
}

bool StgStates::find_shortest(sat::Lit question, const std::function<void()>& record) {
  if (question == sat::LitFalse) return false;
  sat::Lits fixed;
  if (question != sat::LitTrue) fixed.push_back(question);
  if (!solve(fixed)) return false;
  if (length_.empty()) {
    sat::Lits events;
    for (const auto& event : structure_.process().events)
      if (!event->is_cut_off()) events.push_back(instance_.configuration(0).event_lit(*event));
    length_ = sat::IntegerCircuit(formula()).count_ones(events, sat::PermanentGroup);
    if (!solve(fixed)) return false;
  }
  record();
  std::vector<bool> value;
  const auto look = [&] {
    value.clear();
    for (const sat::Lit bit : length_) value.push_back(is_true(bit));
  };
  look();
  for (std::size_t i = length_.size(); i-- > 0;) {
    if (length_[i].is_constant()) continue;
    if (value[i]) {
      sat::Lits attempt = fixed;
      attempt.push_back(~length_[i]);
      const auto answer = formula().solve_assuming(attempt, conflicts_to_shorten);
      if (!answer) break;
      if (*answer) {
        record();
        look();
      }
    }
    fixed.push_back(length_[i] ^ !value[i]);
  }
  return true;
}

StgStates::Events StgStates::trace() const {
  const net::StgPrefix& prefix = structure_.process();
  Events all = configuration::firing_sequence<net::StgPrefix>(prefix, instance_.events_of_model(0));
  if (!has_before_) return all;
  const Events before = instance_.events_of_model(1);
  const auto is_before = [&](const Event* event) {
    return std::ranges::find(before, event) != before.end();
  };
  std::ranges::stable_partition(all, is_before);
  return all;
}

std::size_t StgStates::length_before() const {
  return instance_.events_of_model(has_before_ ? 1 : 0).size();
}

}  // namespace vorel::flow
