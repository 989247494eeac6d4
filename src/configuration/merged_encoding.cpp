#include "configuration/merged_encoding.h"

#include <span>

#include "base/messages.h"
#include "configuration/causal_graph.h"
#include "configuration/configuration_encoding.h"
#include "configuration/implied_conflicts.h"

namespace vorel::configuration {

template <net::Process P>
void encode_backward_conflicts(const P& process, ConfigurationVars<P>& vars,
                               sat::ClauseGroup group) {
  const auto implied = implied_backward_conflicts(process);
  sat::Lits producers;
  for (const auto& condition : process.conditions) {
    if (implied[*condition]) continue;
    producers.clear();
    for (const auto* event : condition->preset) {
      if (!event->is_cut_off()) producers.push_back(event_lit(vars, *event));
    }
    vars.formula.add_at_most_one(producers, group);
  }
}

template <net::Process P>
void encode_initial_conditions(const P& process, ConfigurationVars<P>& vars,
                               sat::ClauseGroup group) {
  for (const auto& condition : process.conditions) {
    if (!condition->is_initial()) continue;
    for (const auto* event : condition->preset) {
      if (!event->is_cut_off()) vars.formula.add_unit(~event_lit(vars, *event), group);
    }
  }
}

// Both clauses say the same in a safe net, where a place is left before it is entered again; each
// spares the solver a search where the other one does not propagate.
template <net::Process P>
void encode_no_gaps(const P& process, ConfigurationVars<P>& vars, sat::ClauseGroup group) {
  const auto conditions = conditions_by_depth(process);
  sat::Lits clause;
  for (std::size_t i = 1; i < conditions.size(); ++i) {
    const auto &earlier = *conditions[i - 1], &later = *conditions[i];
    if (earlier.place != later.place) continue;
    if (earlier.occurrence_depth == later.occurrence_depth) {
      base::print_error(base::format_message("place %s has two conditions at occurrence depth %d",
                                             later.place->name.c_str(), later.occurrence_depth));
      return;
    }
    const sat::Lit entered_again = produced_lit(vars, later, group, -1);
    vars.formula.add_binary(produced_lit(vars, earlier, group, +1), ~entered_again, group);
    clause.assign({~entered_again});
    for (const auto* event : earlier.postset) {
      if (!event->is_cut_off()) clause.push_back(event_lit(vars, *event));
    }
    vars.formula.add_clause(clause, group);
  }
}

#define INSTANTIATE(P)                                                                           \
  template void encode_backward_conflicts<P>(const P&, ConfigurationVars<P>&, sat::ClauseGroup); \
  template void encode_initial_conditions<P>(const P&, ConfigurationVars<P>&, sat::ClauseGroup); \
  template void encode_no_gaps<P>(const P&, ConfigurationVars<P>&, sat::ClauseGroup);
VOREL_FOR_EACH_MERGED_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
