#include "configuration/state_literals.h"

#include <algorithm>
#include <cassert>

#include "net/causality.h"
#include "net/edge_history.h"

namespace vorel::configuration {
namespace {

constexpr std::size_t max_listed = 32;

// Its rivals are not listed: it has many, and is not produced by a dummy that may still fire.
bool is_contested(const net::StgPrefix::Condition& condition) {
  return condition.postset.size() > max_listed &&
         (condition.is_initial() || !condition.pre_event->transition->signal->is_dummy());
}

void sort_unique(EventSet& set) {
  std::ranges::sort(set);
  const auto repeated = std::ranges::unique(set);
  set.erase(repeated.begin(), repeated.end());
}

}  // namespace

StateStructure::StateStructure(const net::StgPrefix& prefix)
    : prefix_{prefix},
      signal_events_(prefix),
      edges_before_(prefix.events.size()),
      has_ordered_edges_(prefix.signals.size(), true) {
  for (const auto& event : prefix.events) {
    const net::StgTransition& transition = *event->transition;
    if (transition.sign == net::Sign::toggle) has_ordered_edges_[transition.signal->index] = false;
  }
  count_edges();
}

void StateStructure::count_edges() {
  const auto order = net::topological_order(prefix_);
  net::EdgeHistory history(prefix_, order);
  while (history.visit_next_block()) continue;
  for (const Event* event : order) {
    if (!event->transition->signal->is_dummy())
      edges_before_[*event] = history.edges_before(*event);
  }
}

bool StateStructure::has_only_ordered_edges() const {
  std::vector<std::uint32_t> numbers;
  for (std::uint32_t signal = 0; signal < prefix_.internals_end; ++signal) {
    numbers.clear();
    for (const Event* event : signal_events_.of(signal)) numbers.push_back(edges_before_[*event]);
    std::ranges::sort(numbers);
    if (std::ranges::adjacent_find(numbers) != numbers.end()) return false;
  }
  return true;
}

// Walks backwards from the event through the dummies that it may wait for. The dummies are left
// free: those that are not in the configuration can fire too.
StateStructure::Condition StateStructure::firing_condition(const Event& event) const {
  Condition result;
  if (!event.is_cut_off()) result.excluding.push_back(event.index);
  std::vector<const Event*> waited_for{&event};
  for (std::size_t i = 0; i < waited_for.size(); ++i) {
    const Event& current = *waited_for[i];
    for (const auto* condition : current.preset) {
      if (&current == &event && is_contested(*condition)) {
        result.marked.push_back(condition);
        continue;
      }
      for (const Event* rival : condition->postset) {
        if (rival != &current && !rival->is_cut_off()) result.excluding.push_back(rival->index);
      }
      if (condition->is_initial()) continue;
      const Event& producer = *condition->pre_event;
      if (producer.is_cut_off()) result.possible = false;
      if (!producer.transition->signal->is_dummy()) {
        result.needed.push_back(producer.index);
      } else if (std::ranges::find(waited_for, &producer) == waited_for.end()) {
        waited_for.push_back(&producer);
      }
    }
  }
  sort_unique(result.needed);
  sort_unique(result.excluding);
  return result;
}

StateLiterals::StateLiterals(const StateStructure& structure,
                             ConfigurationVars<net::StgPrefix>& vars)
    : structure_{structure},
      vars_{vars},
      code_(structure.prefix().internals_end),
      excited_(code_.size()),
      next_(code_.size()) {}

sat::Lit StateLiterals::event(std::uint32_t number) {
  return event_lit(vars_, *structure_.prefix().events[number]);
}

sat::Lit StateLiterals::code(std::uint32_t signal) {
  sat::Lit& lit = code_[signal];
  if (lit.is_uninit()) {
    lit = parity(signal) ^ (structure_.prefix().signals[signal]->initial_value == 1);
  }
  return lit;
}

sat::Lit StateLiterals::parity(std::uint32_t signal) {
  if (structure_.has_ordered_edges(signal)) return parity_of_ordered_edges(signal);
  sat::Lits edges;
  for (const auto* event : structure_.signal_events().of(signal)) {
    if (!event->is_cut_off()) edges.push_back(event_lit(vars_, *event));
  }
  return vars_.formula.make_gate(sat::Gate(sat::GateXor, edges), sat::PermanentGroup);
}

// Of the first edges of a signal at most one is in a configuration, of the second ones at most one,
// and so on; each only after one of those before. Conjunctions over them propagate better than a
// sum modulo 2.
sat::Lit StateLiterals::parity_of_ordered_edges(std::uint32_t signal) {
  std::vector<sat::Lits> levels;
  for (const auto* event : structure_.signal_events().of(signal)) {
    if (event->is_cut_off()) continue;
    const std::uint32_t level = structure_.edges_before()[*event];
    if (levels.size() <= level) levels.resize(level + 1);
    levels[level].push_back(event_lit(vars_, *event));
  }
  sat::CnfFormula& formula = vars_.formula;
  sat::Lit odd = sat::LitFalse;
  while (!levels.empty()) {
    const sat::Lit reached =
        formula.make_gate(sat::Gate(sat::GateOr, levels.back()), sat::PermanentGroup);
    odd = formula.make_gate(sat::Gate(sat::GateAnd, {reached, ~odd}), sat::PermanentGroup);
    levels.pop_back();
  }
  return odd;
}

sat::Lit StateLiterals::can_fire(const net::StgPrefix::Event& fired) {
  const auto condition = structure_.firing_condition(fired);
  if (!condition.possible) return sat::LitFalse;
  sat::Lits lits;
  for (const std::uint32_t number : condition.needed) lits.push_back(event(number));
  for (const std::uint32_t number : condition.excluding) lits.push_back(~event(number));
  for (const auto* contested : condition.marked) {
    lits.push_back(marked_lit(vars_, *contested, sat::PermanentGroup, sat::default_polarity));
  }
  return vars_.formula.make_gate(sat::Gate(sat::GateAnd, lits), sat::PermanentGroup);
}

sat::Lit StateLiterals::excited(std::uint32_t signal) {
  sat::Lit& lit = excited_[signal];
  if (!lit.is_uninit()) return lit;
  sat::Lits lits;
  for (const auto* event : structure_.signal_events().of(signal)) lits.push_back(can_fire(*event));
  return lit = vars_.formula.make_gate(sat::Gate(sat::GateOr, lits), sat::PermanentGroup);
}

sat::Lit StateLiterals::next_value(std::uint32_t signal) {
  sat::Lit& lit = next_[signal];
  if (!lit.is_uninit()) return lit;
  return lit = vars_.formula.make_gate(sat::Gate(sat::GateXor, {code(signal), excited(signal)}),
                                       sat::PermanentGroup);
}

sat::Lit StateLiterals::marked(const net::StgPlace& place,
                               std::span<const net::StgPrefix::Condition* const> instances) {
  sat::LitCell& cell = vars_.places[place];
  if (!cell.lit.is_uninit()) return cell.lit;
  sat::Lits lits;
  for (const auto* condition : instances) {
    lits.push_back(marked_lit(vars_, *condition, sat::PermanentGroup, sat::default_polarity));
  }
  return vars_.formula.define_gate(cell, sat::GateOr, lits, sat::PermanentGroup);
}

}  // namespace vorel::configuration
