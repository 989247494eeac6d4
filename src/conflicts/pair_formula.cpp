#include "conflicts/pair_formula.h"

#include <algorithm>
#include <cassert>

namespace vorel::conflicts {

PairFormula::PairFormula(Instance& instance, const PairQuestion& question)
    : instance_{instance}, question_{question} {}

void PairFormula::encode(std::optional<Inclusion> inclusion) {
  assert(instance_.size() == 0 && "a formula is encoded once");
  instance_.add_configuration();
  instance_.add_configuration();
  for (const net::SignalId signal : instance_.process().visible_signals())
    question_.add_code_constraint(pair(), signal);
  if (inclusion) add_inclusion(*inclusion);
}

void PairFormula::add_inclusion(Inclusion inclusion) {
  const sat::Lit is_second_larger = inclusion == Inclusion::first_in_second
                                        ? sat::LitTrue
                                        : sat::Lit(instance_.formula().new_var(false), false);
  for (const auto& event : instance_.process().events)
    pair().add_inclusion(*event, is_second_larger);
}

void PairFormula::add_any_difference(std::vector<std::uint32_t> candidates) {
  assert(candidates_.empty() && std::ranges::is_sorted(candidates));
  candidates_ = std::move(candidates);
  differences_ = question_.differences(pair(), candidates_);
  instance_.formula().add_clause(differences_, sat::PermanentGroup);
}

std::vector<std::uint32_t> PairFormula::differing_candidates() const {
  std::vector<std::uint32_t> differing;
  for (std::size_t i = 0; i < candidates_.size(); ++i) {
    if (instance_.formula().is_true(differences_[i])) differing.push_back(candidates_[i]);
  }
  assert(!differing.empty() && "the formula asks for a difference");
  return differing;
}

std::pair<configuration::EventSet, configuration::EventSet> PairFormula::model_pair() const {
  return {configuration::event_set(instance_.events_of_model(0)),
          configuration::event_set(instance_.events_of_model(1))};
}

sat::Lit PairFormula::difference(configuration::StgEventId event) {
  auto& first = instance_.configuration(0);
  auto& cells = first.event_aux;
  if (cells.size() == 0) {
    cells = base::IndexedBy<net::StgPrefix::Event, sat::LitCell>(instance_.process().events.size());
  }
  sat::LitCell& cell = cells[event];
  if (!cell.lit.is_uninit()) return cell.lit;
  const sat::Lits both{first.event_lit(event), instance_.configuration(1).event_lit(event)};
  return instance_.formula().define_gate(cell, sat::GateXor, both, sat::PermanentGroup);
}

void PairFormula::exclude(std::span<const BlockedPairs> blocked, sat::ClauseGroup group,
                          const std::vector<std::uint32_t>* known) {
  sat::Lits others, clause;
  for (std::size_t i = 0; known != nullptr && i < candidates_.size(); ++i) {
    if (!std::ranges::binary_search(*known, candidates_[i])) others.push_back(differences_[i]);
  }
  for (const BlockedPairs& pairs : blocked) {
    clause = others;
    for (const configuration::StgEventId e : pairs.different) clause.push_back(~difference(e));
    for (const configuration::StgEventId e : pairs.shared) clause.push_back(difference(e));
    instance_.formula().add_clause(clause, group);
  }
}

}  // namespace vorel::conflicts
