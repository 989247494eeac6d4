// A state is what the token game leaves behind, and every atom that a question needs of it is a
// function of the events that have fired [KKY-2004]: a place is marked if one of its conditions is
// in the final cut, a signal has changed as often as its events are in the configuration. In an STG
// whose dummies count for nothing, what is enabled after dummies alone is enabled; that takes no
// state but the one at hand, as the causes of one event are never in conflict.
#include "configuration/state_literals.h"

#include <algorithm>
#include <cassert>

namespace vorel::configuration {
namespace {

template <net::Process P>
std::size_t signal_count(const P& process) {
  if constexpr (P::NetType::has_signals) return process.signals.size();
  return 0;
}

}  // namespace

template <net::Process P>
StateLiterals<P>::StateLiterals(const StateStructure<P>& structure, ConfigurationVars<P>& vars,
                                Enabledness enabledness)
    : structure_{structure},
      vars_{vars},
      enabledness_{enabledness},
      enabled_(structure.process().events.size()),
      code_(signal_count(structure.process())),
      next_(signal_count(structure.process())),
      excited_(signal_count(structure.process())) {
  assert(&structure.process() == &vars.process());
  assert((std::is_same_v<P, net::StgPrefix>) || enabledness == Enabledness::direct);
}

template <net::Process P>
void StateLiterals<P>::clear() {
  vars_.clear();
  enabled_.clear();
  code_.clear();
  next_.clear();
  excited_.clear();
}

template <net::Process P>
sat::Lit StateLiterals<P>::marked(const Place& place, sat::Polarity polarity) {
  assert(process().places[place.index].get() == &place);
  sat::LitCell& cell = vars_.places[place];
  if (cell.serves(polarity)) return cell.lit;
  const sat::Lits lits = marked_conditions(place, polarity);
  return formula().define_gate(cell, sat::GateOr, lits, vars_.group(), polarity);
}

template <net::Process P>
sat::Lits StateLiterals<P>::marked_conditions(const Place& place, sat::Polarity polarity) {
  sat::Lits lits;
  for (const auto* condition : instances().conditions_of(base::id_of(place)))
    lits.push_back(vars_.marked_lit(*condition, polarity));
  return lits;
}

template <net::Process P>
sat::Lits StateLiterals<P>::enabled_events(const Transition& transition,
                                           sat::Polarity polarity) requires(!P::is_merged) {
  sat::Lits lits;
  for (const Event* event : instances().events_of(base::id_of(transition)))
    lits.push_back(enabled(*event, polarity));
  return lits;
}

template <net::Process P>
sat::Lit StateLiterals<P>::marked_at_least(const Place& place) {
  sat::LitCell& cell = vars_.places[place];
  if (cell.serves(-1)) return cell.lit;
  assert(cell.lit.is_uninit());
  cell = {sat::Lit(formula().new_var(false), false), -1};
  sat::Lits clause;
  for (const auto* condition : structure_.instances().conditions_of(base::id_of(place))) {
    clause.assign({cell.lit, ~vars_.produced_lit(*condition, -1)});
    for (const auto* event : condition->postset) clause.push_back(vars_.event_lit(*event));
    formula().add_clause(clause, vars_.group());
  }
  return cell.lit;
}

template <net::Process P>
sat::Lits StateLiterals<P>::lits_before_firing(const Event& event, sat::Polarity polarity) {
  sat::Lits lits;
  if constexpr (std::is_same_v<P, net::StgPrefix>) {
    if (enabledness_ == Enabledness::via_dummies) {
      const auto condition = structure_.firing_condition(event);
      for (const auto* needed : condition.needed) lits.push_back(vars_.event_lit(*needed));
      for (const auto* excluded : condition.excluded) lits.push_back(~vars_.event_lit(*excluded));
      for (const auto* contested : condition.marked) {
        lits.push_back(vars_.marked_lit(*contested, polarity));
      }
      return lits;
    }
  }
  assert(enabledness_ == Enabledness::direct);
  for (const auto* condition : event.preset) lits.push_back(vars_.marked_lit(*condition, polarity));
  return lits;
}

template <net::Process P>
sat::Lit StateLiterals<P>::enabled(const Event& event, sat::Polarity polarity) {
  sat::LitCell& cell = enabled_[event];
  if (cell.serves(polarity)) return cell.lit;
  const sat::Lits lits = lits_before_firing(event, polarity);
  return formula().define_gate(cell, sat::GateAnd, lits, vars_.group(), polarity);
}

// A configuration of a merged process may go on behind a cut-off, where what is enabled has no
// event: there the marking decides.
template <net::Process P>
sat::Lit StateLiterals<P>::enabled(const Transition& transition, sat::Polarity polarity) {
  assert(process().transitions[transition.index].get() == &transition);
  sat::LitCell& cell = vars_.transitions[transition];
  if (cell.serves(polarity)) return cell.lit;
  if (instances().events_of(base::id_of(transition)).empty()) return cell.lit = sat::LitFalse;
  if constexpr (P::is_merged) {
    sat::Lits lits;
    for (const auto* place : transition.preset) lits.push_back(marked(*place, polarity));
    return formula().define_gate(cell, sat::GateAnd, lits, vars_.group(), polarity);
  } else {
    const sat::Lits lits = enabled_events(transition, polarity);
    return formula().define_gate(cell, sat::GateOr, lits, vars_.group(), polarity);
  }
}

template <net::Process P>
sat::Lit StateLiterals<P>::code(net::SignalId signal) requires P::NetType::has_signals {
  assert(process().visible_signals().contains(signal) && "a dummy has no value");
  assert(base::element(process().signals, signal).initial_value != net::unknown_value);
  sat::Lit& lit = code_[signal].lit;
  if (lit.is_uninit()) {
    const bool is_high = base::element(process().signals, signal).initial_value == 1;
    lit = parity(signal) ^ is_high;
  }
  return lit;
}

template <net::Process P>
sat::Lit StateLiterals<P>::parity(net::SignalId signal) requires P::NetType::has_signals {
  if constexpr (!P::is_merged) {
    if (structure_.has_ordered_edges(signal)) return parity_of_ordered_edges(signal);
  }
  sat::Lits edges;
  for (const Event* event : structure_.instances().events_of(signal)) {
    edges.push_back(vars_.event_lit(*event));
  }
  return formula().make_gate(sat::Gate(sat::GateXor, edges), vars_.group());
}

// Of the first edges of a signal at most one is in a configuration, of the second ones at most one,
// and so on; each only after one of those before. Conjunctions over them propagate better than a
// sum modulo 2.
template <net::Process P>
sat::Lit StateLiterals<P>::parity_of_ordered_edges(
    net::SignalId signal) requires std::is_same_v<P, net::StgPrefix> {
  std::vector<sat::Lits> levels;
  for (const Event* event : structure_.instances().events_of(signal)) {
    const sat::Lit fired = vars_.event_lit(*event);
    if (fired == sat::LitFalse) continue;
    const std::uint32_t level = structure_.edges_before()[*event];
    assert(level < process().events.size());
    if (levels.size() <= level) levels.resize(level + 1);
    levels[level].push_back(fired);
  }
  sat::Lit odd = sat::LitFalse;
  while (!levels.empty()) {
    const sat::Lit reached =
        formula().make_gate(sat::Gate(sat::GateOr, levels.back()), vars_.group());
    odd = formula().make_gate(sat::Gate(sat::GateAnd, {reached, ~odd}), vars_.group());
    levels.pop_back();
  }
  return odd;
}

template <net::Process P>
sat::Lit StateLiterals<P>::excited(net::SignalId signal,
                                   sat::Polarity polarity) requires P::NetType::has_signals {
  sat::LitCell& cell = excited_[signal];
  if (cell.serves(polarity)) return cell.lit;
  sat::Lits lits;
  if constexpr (P::is_merged) {
    for (const Transition* transition : structure_.instances().transitions_of(signal)) {
      lits.push_back(enabled(*transition, polarity));
    }
  } else {
    for (const Event* event : structure_.instances().events_of(signal)) {
      lits.push_back(enabled(*event, polarity));
    }
  }
  return formula().define_gate(cell, sat::GateOr, lits, vars_.group(), polarity);
}

template <net::Process P>
sat::Lit StateLiterals<P>::next_value(net::SignalId signal) requires P::NetType::has_signals {
  assert(process().visible_signals().contains(signal) && "a dummy has no value");
  sat::Lit& lit = next_[signal].lit;
  if (lit.is_uninit()) {
    lit = formula().make_gate(sat::Gate(sat::GateXor, {code(signal), excited(signal)}),
                              vars_.group());
  }
  return lit;
}

#define INSTANTIATE(P) template class StateLiterals<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
