#include "configuration/state_formula.h"

#include <cassert>

namespace vorel::configuration {

StateFormula::StateFormula(const StateStructure<net::StgPrefix>& structure,
                           const EncodingOptions& options, std::size_t states)
    : instance_{structure, options} {
  for (std::size_t i = 0; i < states; ++i) instance_.add_configuration();
}

// A consistent signal that is excited is about to take the other value.
void StateFormula::add_excited(std::size_t state, net::SignalId signal, bool value,
                               sat::ClauseGroup group) {
  assert(prefix().driven_signals().contains(signal));
  formula().add_unit(instance_.state(state).excited(signal), group);
  formula().add_unit(instance_.state(state).code(signal) ^ value, group);
}

void StateFormula::add_not_excited(std::size_t state, net::SignalId signal, bool value,
                                   sat::ClauseGroup group) {
  assert(prefix().driven_signals().contains(signal));
  const sat::Lit already = instance_.state(state).code(signal) ^ !value;
  formula().add_binary(~instance_.state(state).excited(signal), already, group);
}

Region StateFormula::region(std::size_t state, net::SignalId signal) {
  assert(prefix().visible_signals().contains(signal));
  const bool is_high = formula().is_true(instance_.state(state).code(signal));
  if (formula().is_true(instance_.state(state).excited(signal))) {
    return is_high ? Region::falling : Region::rising;
  }
  return is_high ? Region::stable_high : Region::stable_low;
}

}  // namespace vorel::configuration
