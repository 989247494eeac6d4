#include "configuration/configuration_encoding.h"

#include <cassert>

#include "base/messages.h"
#include "configuration/causal_graph.h"
#include "configuration/implied_conflicts.h"

namespace vorel::configuration {

template <net::Process P>
void ConfigurationEncoding<P>::collect(const base::PtrList<Event>& events) {
  lits_.clear();
  for (const Event* event : events) lits_.push_back(vars_.event_lit(*event));
}

template <net::Process P>
void ConfigurationEncoding<P>::encode_causality() {
  for (const auto& event : process_.events) {
    const sat::Lit fired = vars_.event_lit(*event);
    if (fired == sat::LitFalse) continue;
    for (const auto* condition : event->preset) {
      formula_.add_binary(~fired, vars_.produced_lit(*condition, +1), group_);
    }
  }
}

template <net::Process P>
void ConfigurationEncoding<P>::encode_conflicts() {
  const auto skip = skippable_conditions(process_);
  for (const auto& condition : process_.conditions) {
    if (skip[*condition]) continue;
    collect(condition->postset);
    formula_.add_at_most_one(lits_, group_);
  }
}

template <net::Process P>
void ConfigurationEncoding<P>::encode_no_max_dummies() requires P::NetType::has_signals {
  for (const auto& event : process_.events) {
    if (event->is_cut_off() || !net::is_dummy(*event)) continue;
    lits_.assign({~vars_.event_lit(*event)});
    for (const auto* condition : event->postset) {
      for (const Event* next : condition->postset) lits_.push_back(vars_.event_lit(*next));
    }
    formula_.add_clause(lits_, group_);
  }
}

template <net::Process P>
void ConfigurationEncoding<P>::encode_backward_conflicts() requires P::is_merged {
  const auto implied = implied_backward_conflicts(process_);
  for (const auto& condition : process_.conditions) {
    if (implied[*condition]) continue;
    collect(condition->preset);
    formula_.add_at_most_one(lits_, group_);
  }
}

template <net::Process P>
void ConfigurationEncoding<P>::encode_initial_conditions() requires P::is_merged {
  for (const auto& condition : process_.conditions) {
    if (!condition->is_initial()) continue;
    collect(condition->preset);
    formula_.add_units(lits_, true, group_);
  }
}

// Both clauses say the same in a safe net, where a place is left before it is entered again; each
// spares the solver a search where the other one does not propagate.
template <net::Process P>
void ConfigurationEncoding<P>::encode_no_gaps() requires P::is_merged {
  const auto conditions = conditions_by_depth(process_);
  for (std::size_t i = 1; i < conditions.size(); ++i) {
    const auto &earlier = *conditions[i - 1], &later = *conditions[i];
    if (earlier.place != later.place) continue;
    if (earlier.occurrence_depth == later.occurrence_depth) {
      base::print_error(base::format_message("place %s has two conditions at occurrence depth %d",
                                             later.place->name.c_str(), later.occurrence_depth));
      return;
    }
    assert(earlier.occurrence_depth < later.occurrence_depth);
    const sat::Lit entered_again = vars_.produced_lit(later, -1);
    formula_.add_binary(vars_.produced_lit(earlier, +1), ~entered_again, group_);
    collect(earlier.postset);
    lits_.push_back(~entered_again);
    formula_.add_clause(lits_, group_);
  }
}

#define INSTANTIATE(P) template class ConfigurationEncoding<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
