#include "synthesis/state_sets.h"

#include <cassert>

#include "base/messages.h"

namespace vorel {

StateSets StateSetSearch::collect(std::uint32_t signal, FunctionPhase phase,
                                  const SignalList& support) {
  // Definitions come before the first solve, so that every model has their values.
  states_.state(0).next_value(signal);
  for (const std::uint32_t other : support) states_.state(0).code(other);
  StateSets sets;
  sets.on = sets.off = Cover(support.size(), false);
  sets.four_sets.fill(sets.on);
  switch (style_) {
    case SynthesisStyle::complex_gate:
      collect_all(signal, support, sets);
      break;
    case SynthesisStyle::four_sets:
      collect_four_sets(signal, support, sets);
      break;
    case SynthesisStyle::standard_c:
      collect_arcs(signal, phase, support, sets);
      [[fallthrough]];
    case SynthesisStyle::generalised_c:
      collect_excited_and_opposite(signal, phase, support, sets);
  }
  return sets;
}

void StateSetSearch::collect_all(std::uint32_t signal, const SignalList& support, StateSets& sets) {
  const ClauseGroup blocked = states_.formula().new_group();
  enumerate(signal, support, blocked, [&sets](const Cube& code, Region region) {
    (next_value(region) ? sets.on : sets.off).add(code);
  });
  states_.formula().remove_group(blocked);
}

// A code can stand for an excited and for a stable state: the excited ones are found first, and
// keep it.
void StateSetSearch::collect_four_sets(std::uint32_t signal, const SignalList& support,
                                       StateSets& sets) {
  CnfFormula& formula = states_.formula();
  const ClauseGroup blocked = formula.new_group();
  const Lit excited = states_.state(0).excited(signal);
  const auto visit = [&sets](const Cube& code, Region region) {
    sets.four_sets[static_cast<std::size_t>(region)].add(code);
    (next_value(region) ? sets.on : sets.off).add(code);
  };
  for (const Lit wanted : {excited, ~excited}) {
    const ClauseGroup group = formula.new_group();
    formula.add_unit(wanted, group);
    enumerate(signal, support, blocked, visit);
    formula.remove_group(group);
  }
  formula.remove_group(blocked);
}

// Where the signal stays at the value that the function drives it to, the function is free.
void StateSetSearch::collect_excited_and_opposite(std::uint32_t signal, FunctionPhase phase,
                                                  const SignalList& support, StateSets& sets) {
  CnfFormula& formula = states_.formula();
  const bool target = phase == FunctionPhase::set;
  const ClauseGroup blocked = formula.new_group();
  const ClauseGroup excited = formula.new_group();
  states_.add_excited(0, signal, target, excited);
  enumerate(signal, support, blocked, [&sets](const Cube& code, Region) { sets.on.add(code); });
  formula.remove_group(excited);
  const ClauseGroup opposite = formula.new_group();
  formula.add_unit(states_.state(0).next_value(signal) ^ target, opposite);
  enumerate(signal, support, blocked, [&sets](const Cube& code, Region) { sets.off.add(code); });
  formula.remove_group(opposite);
  formula.remove_group(blocked);
}

// The edges of other signals in states where the signal stays at its value. A code comes again only
// with a further excited signal.
void StateSetSearch::collect_arcs(std::uint32_t signal, FunctionPhase phase,
                                  const SignalList& support, StateSets& sets) {
  CnfFormula& formula = states_.formula();
  StateLiterals& state = states_.state(0);
  const bool value = phase == FunctionPhase::set;
  const ClauseGroup group = formula.new_group();
  formula.add_unit(state.code(signal) ^ !value, group);
  states_.add_not_excited(0, signal, !value, group);
  Lits changes;
  for (const std::uint32_t other : support) {
    if (other != signal) changes.push_back(state.excited(other));
  }
  formula.add_clause(changes, group);
  while (!run_failed() && solve()) {
    const Cube code = code_of_model(support);
    Lits clause = other_code(support);
    for (std::size_t i = 0; i < support.size(); ++i) {
      if (support[i] == signal) continue;
      const Lit excited = state.excited(support[i]);
      if (!formula.is_true(excited)) {
        clause.push_back(excited);
        continue;
      }
      Cube next = code;
      next.set(i, code[i] == Ternary::one ? Ternary::zero : Ternary::one);
      sets.arcs.emplace_back(code, std::move(next));
    }
    formula.add_clause(clause, group);
  }
  formula.remove_group(group);
}

void StateSetSearch::enumerate(std::uint32_t signal, const SignalList& support, ClauseGroup blocked,
                               const Visit& visit) {
  while (!run_failed() && solve()) {
    visit(code_of_model(support), states_.region(0, signal));
    const Lits clause = other_code(support);
    states_.formula().add_clause(clause, blocked);
  }
}

Cube StateSetSearch::code_of_model(const SignalList& support) {
  Cube code(support.size(), Ternary::dash);
  for (std::size_t i = 0; i < support.size(); ++i) {
    const ModelValue value = states_.formula().value(states_.state(0).code(support[i]));
    if (value == ModelValue::undefined) continue;
    code.set(i, value == ModelValue::yes ? Ternary::one : Ternary::zero);
  }
  return code;
}

Lits StateSetSearch::other_code(const SignalList& support) {
  const CnfFormula& formula = states_.formula();
  Lits clause;
  for (const std::uint32_t other : support) {
    const Lit lit = states_.state(0).code(other);
    if (formula.value(lit) != ModelValue::undefined) clause.push_back(lit ^ formula.is_true(lit));
  }
  return clause;
}

bool StateSetSearch::solve() {
  ++solve_calls_;
  return states_.formula().solve();
}

}  // namespace vorel
