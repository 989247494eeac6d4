// verify/marking_formula.h - what holds in a reachable marking of the composition, as literals.
// Here:      values of wires, excited gates, what the STG enables and lets happen; solving.
// Not here:  the questions (verify/state_questions.h, verify/progress_check.h), the same in one
//            state at hand (verify/circuit_game.h).
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "base/deadline.h"
#include "bdd/bdd.h"
#include "configuration/search_instance.h"
#include "sat/bdd_definition.h"
#include "verify/composition.h"
#include "verify/edge_presets.h"

namespace vorel::verify {

class MarkingFormula {
 public:
  using Event = net::NetPrefix::Event;

  // The prefix is that of the composition's net. All must outlive it.
  MarkingFormula(const Composition& composition, const EdgePresets& presets,
                 const configuration::StateStructure<net::NetPrefix>& structure,
                 const sat::CnfParams& params, const base::Deadline& deadline);

  const Composition& composition() const { return composition_; }
  const std::vector<PlaceSet>& edge_presets(const net::Signal& signal) const {
    return presets_[signal.index];
  }

  sat::Lit value(WireId wire) const { return values_[wire.value]; }
  // Of the wires, whose variables have their numbers.
  sat::Lit function(const bdd::Bdd& f);
  sat::Lit excited(std::size_t gate);
  // Of places of the net: STG places, and values of wires.
  sat::Lit marked(std::uint32_t place);
  sat::Lit all_marked(const PlaceSet& places);
  sat::Lit enabled(const net::StgTransition& transition);
  // The STG lets the signal change, perhaps after silent transitions.
  sat::Lit change_allowed(const net::Signal& signal);
  sat::Lit all_of(const sat::Lits& lits);
  sat::Lit any_of(const sat::Lits& lits);

  sat::CnfFormula& formula() { return instance_.formula(); }
  // A model with these literals. Nothing when time is over.
  std::optional<bool> solve(sat::Lits assumptions);
  // Of the model, causes first.
  std::vector<const Event*> events_of_model() const { return instance_.events_of_model(0); }

 private:
  void define_values();

  const Composition& composition_;
  const EdgePresets& presets_;
  const base::Deadline& deadline_;
  configuration::SearchInstance<net::NetPrefix> instance_;
  sat::Lits values_;                       // by wire
  sat::Lits excited_, enabled_, allowed_;  // by gate, transition, signal; uninit until asked for
  std::vector<bdd::Bdd> functions_;        // whose nodes the definitions know
  sat::BddDefinition<bdd::Bdd> bdd_definition_;  // refers to values_
};

}  // namespace vorel::verify
