#include "verify/marking_formula.h"

#include <algorithm>
#include <cassert>

#include "sat/timed_solve.h"

namespace vorel::verify {
namespace {

configuration::EncodingOptions options_of(const sat::CnfParams& params) {
  configuration::EncodingOptions options;
  options.formula = params;
  options.enabledness = configuration::Enabledness::direct;
  return options;
}

}  // namespace

MarkingFormula::MarkingFormula(const Composition& composition, const EdgePresets& presets,
                               const configuration::StateStructure<net::NetPrefix>& structure,
                               const sat::CnfParams& params, const base::Deadline& deadline)
    : composition_{composition},
      presets_{presets},
      deadline_{deadline},
      instance_{structure, options_of(params)},
      values_(composition.circuit().wires.size()),
      excited_(composition.circuit().gates.size()),
      enabled_(composition.stg().transitions.size()),
      allowed_(composition.stg().signals.size()),
      bdd_definition_{instance_.formula(), values_, sat::PermanentGroup} {
  instance_.add_configuration();
  define_values();
}

// One of the two places of a wire is marked, always: what is true of a marked place and cannot be
// true of both tells which.
void MarkingFormula::define_values() {
  auto& state = instance_.state(0);
  const auto& places = instance_.process().places;
  for (std::uint32_t w = 0; w < values_.size(); ++w) {
    const auto lit = [&](bool value) {
      return state.marked_at_least(*places[composition_.value_place({w}, value)]);
    };
    values_[w] = lit(true);
    formula().add_binary(~values_[w], ~lit(false), sat::PermanentGroup);
  }
}

sat::Lit MarkingFormula::function(const bdd::Bdd& f) {
  functions_.push_back(f);  // a node that is freed would give its address to another
  return bdd_definition_.define(f);
}

sat::Lit MarkingFormula::excited(std::size_t gate) {
  sat::Lit& lit = excited_[gate];
  if (lit.is_uninit()) lit = function(composition_.functions().excited(gate));
  return lit;
}

sat::Lit MarkingFormula::marked(std::uint32_t place) {
  if (!composition_.is_stg_place(place)) {
    const auto meaning = composition_.wire_value(place);
    return value(meaning.wire) ^ !meaning.value;
  }
  return instance_.state(0).marked(*instance_.process().places[place]);
}

sat::Lit MarkingFormula::all_marked(const PlaceSet& places) {
  sat::Lits lits;
  for (const std::uint32_t place : places) lits.push_back(marked(place));
  return all_of(lits);
}

sat::Lit MarkingFormula::enabled(const net::StgTransition& transition) {
  sat::Lit& lit = enabled_[transition.index];
  if (!lit.is_uninit()) return lit;
  sat::Lits lits;
  for (const auto* place : transition.preset) lits.push_back(marked(place->index));
  return lit = all_of(lits);
}

sat::Lit MarkingFormula::change_allowed(const net::Signal& signal) {
  assert(!composition_.is_silent(signal));
  sat::Lit& lit = allowed_[signal.index];
  if (!lit.is_uninit()) return lit;
  sat::Lits ways;
  for (const PlaceSet& set : edge_presets(signal)) ways.push_back(all_marked(set));
  return lit = any_of(ways);
}

sat::Lit MarkingFormula::all_of(const sat::Lits& lits) {
  return formula().make_gate(sat::Gate(sat::GateAnd, lits), sat::PermanentGroup);
}

sat::Lit MarkingFormula::any_of(const sat::Lits& lits) {
  return formula().make_gate(sat::Gate(sat::GateOr, lits), sat::PermanentGroup);
}

std::optional<bool> MarkingFormula::solve(sat::Lits assumptions) {
  if (std::ranges::find(assumptions, sat::LitFalse) != assumptions.end()) return false;
  std::erase(assumptions, sat::LitTrue);
  return sat::solve_by(formula(), assumptions, deadline_);
}

}  // namespace vorel::verify
