#include "configuration/configuration_vars.h"

#include <cassert>

namespace vorel::configuration {

template <net::Process P>
ConfigurationVars<P>::ConfigurationVars(const P& process, sat::CnfFormula& formula,
                                        sat::ClauseGroup group)
    : places(process.places.size()),
      transitions(process.transitions.size()),
      process_{process},
      formula_{formula},
      group_{group},
      events_(process.events.size()),
      produced_(process.conditions.size()),
      marked_(process.conditions.size()) {}

template <net::Process P>
sat::Lit ConfigurationVars<P>::event_lit(const Event& event) {
  assert(event.index < process_.events.size() && process_.events[event.index].get() == &event);
  sat::LitCell& cell = events_[event];
  if (cell.lit.is_uninit()) {
    cell.lit = event.is_cut_off() ? sat::LitFalse : sat::Lit(formula_.new_var(no_branch), false);
  }
  return cell.lit;
}

template <net::Process P>
sat::Lit ConfigurationVars<P>::produced_lit(const Condition& condition, sat::Polarity polarity) {
  assert(condition.index != base::no_index && "left out after a cut-off: nobody consumes it");
  sat::LitCell& cell = produced_[condition];
  if (cell.serves(polarity)) return cell.lit;
  if (condition.is_initial()) return cell.lit = sat::LitTrue;
  const auto producers = condition.producers();
  if (producers.size() == 1) return cell.lit = event_lit(*producers.front());
  scratch_.clear();
  for (const auto* event : producers) scratch_.push_back(event_lit(*event));
  return formula_.define_gate(cell, sat::GateOr, scratch_, group_, polarity);
}

template <net::Process P>
sat::Lit ConfigurationVars<P>::marked_lit(const Condition& condition, sat::Polarity polarity) {
  assert(condition.index != base::no_index && "left out after a cut-off: in no final cut");
  sat::LitCell& cell = marked_[condition];
  if (cell.serves(polarity)) return cell.lit;
  const sat::Lit produced = produced_lit(condition, polarity);
  scratch_.assign({produced});
  for (const auto* event : condition.postset) scratch_.push_back(~event_lit(*event));
  return formula_.define_gate(cell, sat::GateAnd, scratch_, group_, polarity);
}

template <net::Process P>
void ConfigurationVars<P>::clear() {
  assert(event_aux.size() == 0 && "engines that fill it do not reset their formula");
  events_.clear();
  produced_.clear();
  marked_.clear();
  places.clear();
  transitions.clear();
}

template <net::Process P>
bool ConfigurationVars<P>::is_in_model(const Event& event) const {
  const sat::Lit lit = events_[event].lit;
  return !lit.is_uninit() && formula_.is_true(lit);
}

template <net::Process P>
sat::Lit ConfigurationVars<P>::variable_of(const Event& event) const {
  const sat::Lit lit = events_[event].lit;
  return lit.is_variable() ? lit : sat::LitUninit;
}

#define INSTANTIATE(P) template class ConfigurationVars<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
