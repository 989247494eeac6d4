#include "verify/state_questions.h"

#include <algorithm>
#include <iterator>

namespace vorel::verify {
namespace {

PlaceSet numbers_of(const base::PtrList<net::StgPlace>& places) {
  PlaceSet numbers;
  for (const net::StgPlace* place : places) numbers.push_back(place->index);
  return numbers;
}

class HazardBuilder {
 public:
  explicit HazardBuilder(MarkingFormula& formula)
      : formula_{formula}, composition_{formula.composition()} {}

  HazardLiterals run() {
    const Circuit& circuit = composition_.circuit();
    HazardLiterals result;
    for (std::size_t gate = 0; gate < circuit.gates.size(); ++gate) {
      hazards_.clear();
      for (const WireId wire : circuit.gates[gate].inputs) add_pair(gate, wire);
      result.hazards.push_back(formula_.any_of(hazards_));
    }
    result.arbitrations = std::move(arbitrations_);
    return result;
  }

 private:
  struct Change {
    sat::Lit possible;
    const net::StgTransition* transition;  // null: of a wire that is no signal
  };

  std::vector<Change> changes_of(WireId wire) {
    const std::size_t driver = composition_.functions().driver(wire);
    const sat::Lit excited = driver == no_gate ? sat::LitTrue : formula_.excited(driver);
    const net::Signal* const signal = composition_.signal_of(wire);
    if (signal == nullptr) return {{excited, nullptr}};
    std::vector<Change> changes;
    for (const auto& transition : composition_.stg().transitions)
      if (transition->signal == signal)
        changes.push_back(
            {formula_.all_of({excited, formula_.enabled(*transition)}), transition.get()});
    return changes;
  }

  void add_pair(std::size_t gate, WireId wire) {
    const bdd::Bdd function = composition_.functions().disabled_by(gate, wire);
    if (function.is_false()) return;
    const WireId loser = composition_.circuit().gates[gate].output;
    const sat::Lit disabled = formula_.function(function);
    sat::Lits let_through;
    for (const Change& change : changes_of(wire)) {
      const sat::Lit lost = formula_.all_of({disabled, change.possible});
      const sat::Lit may_lose =
          is_mutex(loser, wire) ? sat::LitTrue : is_chosen(loser, wire, change);
      hazards_.push_back(formula_.all_of({lost, ~may_lose}));
      let_through.push_back(formula_.all_of({lost, may_lose}));
    }
    const sat::Lit happens = formula_.any_of(let_through);
    if (happens != sat::LitFalse) arbitrations_.push_back({loser, wire, happens});
  }

  bool is_mutex(WireId a, WireId b) const {
    return std::ranges::any_of(composition_.circuit().mutexes, [&](const auto& pair) {
      return pair == std::pair(a, b) || pair == std::pair(b, a);
    });
  }

  // The STG lets the loser change before the winner's transition and not after it.
  sat::Lit is_chosen(WireId loser, WireId winner, const Change& change) {
    const net::Signal* const signal = composition_.signal_of(loser);
    if (signal == nullptr || change.transition == nullptr ||
        composition_.functions().driver(winner) == no_gate)
      return sat::LitFalse;
    const PlaceSet preset = numbers_of(change.transition->preset);
    const PlaceSet postset = numbers_of(change.transition->postset);
    sat::Lits after;
    bool takes_away = false;
    for (const PlaceSet& set : formula_.edge_presets(*signal)) {
      PlaceSet rest, taken;
      std::ranges::set_difference(set, postset, std::back_inserter(rest));
      std::ranges::set_intersection(rest, preset, std::back_inserter(taken));
      if (taken.empty())
        after.push_back(formula_.all_marked(rest));
      else
        takes_away = true;
    }
    if (!takes_away) return sat::LitFalse;
    return formula_.all_of({formula_.change_allowed(*signal), ~formula_.any_of(after)});
  }

  MarkingFormula& formula_;
  const Composition& composition_;
  sat::Lits hazards_;  // of the gate that it is about
  std::vector<HazardLiterals::Arbitration> arbitrations_;
};

}  // namespace

sat::Lits nonconforming(MarkingFormula& formula) {
  const Composition& composition = formula.composition();
  sat::Lits wrong;
  for (std::size_t gate = 0; gate < composition.circuit().gates.size(); ++gate)
    if (const auto* signal = composition.signal_of(composition.circuit().gates[gate].output))
      wrong.push_back(formula.all_of({formula.excited(gate), ~formula.change_allowed(*signal)}));
  return wrong;
}

sat::Lit dead(MarkingFormula& formula) {
  const Composition& composition = formula.composition();
  sat::Lits moves, due;
  for (std::size_t gate = 0; gate < composition.circuit().gates.size(); ++gate) {
    moves.push_back(formula.excited(gate));
    if (const auto* signal = composition.signal_of(composition.circuit().gates[gate].output))
      due.push_back(formula.change_allowed(*signal));
  }
  for (const auto& transition : composition.stg().transitions) {
    const auto wire = composition.wire_of(*transition->signal);
    if (!wire || composition.functions().driver(*wire) == no_gate)
      moves.push_back(formula.enabled(*transition));
  }
  return formula.all_of({~formula.any_of(moves), formula.any_of(due)});
}

HazardLiterals hazards(MarkingFormula& formula) { return HazardBuilder(formula).run(); }

}  // namespace vorel::verify
