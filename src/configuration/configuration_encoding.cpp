#include "configuration/configuration_encoding.h"

#include <algorithm>
#include <cassert>

#include "configuration/implied_conflicts.h"

namespace vorel::configuration {
namespace {

template <class T>
void sort_unique(std::vector<T*>& list) {
  std::ranges::sort(list, {}, &T::index);
  const auto repeated = std::ranges::unique(list);
  list.erase(repeated.begin(), repeated.end());
}

}  // namespace

template <net::Process P>
sat::Lit event_lit(ConfigurationVars<P>& vars, const typename P::Event& event) {
  assert(!event.is_cut_off() && "a cut-off is in no configuration");
  sat::LitCell& cell = vars.events[event];
  if (cell.lit.is_uninit()) cell.lit = sat::Lit(vars.formula.new_var(vars.no_branch), false);
  return cell.lit;
}

template <net::Process P>
sat::Lit produced_lit(ConfigurationVars<P>& vars, const typename P::Condition& condition,
                      sat::ClauseGroup group, sat::Polarity polarity) {
  sat::LitCell& cell = vars.produced[condition];
  if (cell.serves(polarity)) return cell.lit;
  if (condition.is_initial()) return cell.lit = sat::LitTrue;
  const auto producers = condition.producers();
  if (producers.size() == 1) {
    const auto& producer = *producers.front();
    return cell.lit = producer.is_cut_off() ? sat::LitFalse : event_lit(vars, producer);
  }
  sat::Lits lits;
  for (const auto* event : producers) {
    if (!event->is_cut_off()) lits.push_back(event_lit(vars, *event));
  }
  return vars.formula.define_gate(cell, sat::GateType::GateOr, lits, group, polarity);
}

template <net::Process P>
sat::Lit marked_lit(ConfigurationVars<P>& vars, const typename P::Condition& condition,
                    sat::ClauseGroup group, sat::Polarity polarity) {
  sat::LitCell& cell = vars.marked[condition];
  if (cell.serves(polarity)) return cell.lit;
  sat::Lits lits{produced_lit(vars, condition, group, polarity)};
  for (const auto* event : condition.postset) {
    if (!event->is_cut_off()) lits.push_back(~event_lit(vars, *event));
  }
  return vars.formula.define_gate(cell, sat::GateType::GateAnd, lits, group, polarity);
}

template <net::Process P>
sat::Lit place_lit(ConfigurationVars<P>& vars, const typename P::NetType::Place& place,
                   std::span<const typename P::Condition* const> instances,
                   sat::ClauseGroup group) {
  sat::LitCell& cell = vars.places[place];
  assert((cell.lit.is_uninit() || cell.polarity == -1) && "one direction is all that is defined");
  if (!cell.lit.is_uninit()) return cell.lit;
  cell = {sat::Lit(vars.formula.new_var(false), false), -1};
  sat::Lits clause;
  for (const auto* condition : instances) {
    clause.assign({cell.lit, ~produced_lit(vars, *condition, group, -1)});
    for (const auto* event : condition->postset) {
      if (!event->is_cut_off()) clause.push_back(event_lit(vars, *event));
    }
    vars.formula.add_clause(clause, group);
  }
  return cell.lit;
}

template <net::Process P>
void encode_causality(const P& process, ConfigurationVars<P>& vars, sat::ClauseGroup group) {
  for (const auto& event : process.events) {
    if (event->is_cut_off()) continue;
    const sat::Lit lit = event_lit(vars, *event);
    for (const auto* condition : event->preset) {
      vars.formula.add_binary(~lit, produced_lit(vars, *condition, group, +1), group);
    }
  }
}

template <net::Process P>
void encode_conflicts(const P& process, ConfigurationVars<P>& vars, sat::ClauseGroup group) {
  const auto skip = skippable_conditions(process);
  sat::Lits consumers;
  for (const auto& condition : process.conditions) {
    if (skip[*condition]) continue;
    consumers.clear();
    for (const auto* event : condition->postset) {
      if (!event->is_cut_off()) consumers.push_back(event_lit(vars, *event));
    }
    vars.formula.add_at_most_one(consumers, group);
  }
}

template <net::Process P>
void encode_no_max_dummies(const P& process, ConfigurationVars<P>& vars, sat::ClauseGroup group,
                           const std::function<bool(const typename P::Event&)>& predicate) {
  std::vector<typename P::Event*> successors;
  sat::Lits clause;
  for (const auto& event : process.events) {
    if (event->is_cut_off() || !predicate(*event)) continue;
    successors.clear();
    for (const auto* condition : event->postset) {
      successors.insert(successors.end(), condition->postset.begin(), condition->postset.end());
    }
    sort_unique(successors);
    clause.assign({~event_lit(vars, *event)});
    for (const auto* successor : successors) {
      if (!successor->is_cut_off()) clause.push_back(event_lit(vars, *successor));
    }
    vars.formula.add_clause(clause, group);
  }
}

#define INSTANTIATE(P)                                                                            \
  template sat::Lit event_lit<P>(ConfigurationVars<P>&, const P::Event&);                         \
  template sat::Lit produced_lit<P>(ConfigurationVars<P>&, const P::Condition&, sat::ClauseGroup, \
                                    sat::Polarity);                                               \
  template sat::Lit marked_lit<P>(ConfigurationVars<P>&, const P::Condition&, sat::ClauseGroup,   \
                                  sat::Polarity);                                                 \
  template sat::Lit place_lit<P>(ConfigurationVars<P>&, const P::NetType::Place&,                 \
                                 std::span<const P::Condition* const>, sat::ClauseGroup);         \
  template void encode_causality<P>(const P&, ConfigurationVars<P>&, sat::ClauseGroup);           \
  template void encode_conflicts<P>(const P&, ConfigurationVars<P>&, sat::ClauseGroup);           \
  template void encode_no_max_dummies<P>(const P&, ConfigurationVars<P>&, sat::ClauseGroup,       \
                                         const std::function<bool(const P::Event&)>&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
