#include "configuration/state_formula.h"

#include "configuration/configuration_encoding.h"

namespace vorel::configuration {
namespace {

bool is_dummy(const net::StgPrefix::Event& event) { return event.transition->signal->is_dummy(); }

}  // namespace

StateFormula::StateFormula(const StateStructure& structure, const base::Params& params,
                           std::size_t states)
    : structure_{structure}, formula_{sat::CnfParams::of(params)} {
  for (std::size_t i = 0; i < states; ++i) {
    configurations_.push_back(
        std::make_unique<ConfigurationVars<net::StgPrefix>>(prefix(), formula_));
    ConfigurationVars<net::StgPrefix>& vars = *configurations_.back();
    encode_causality(prefix(), vars, sat::PermanentGroup);
    encode_conflicts(prefix(), vars, sat::PermanentGroup);
    if (params.get("no_max_dummies") != 0) {
      encode_no_max_dummies<net::StgPrefix>(prefix(), vars, sat::PermanentGroup, is_dummy);
    }
    literals_.push_back(std::make_unique<StateLiterals>(structure_, vars));
  }
}

// A consistent signal that is excited is about to take the other value.
void StateFormula::add_excited(std::size_t state, std::uint32_t signal, bool value,
                               sat::ClauseGroup group) {
  formula_.add_unit(literals_[state]->excited(signal), group);
  formula_.add_unit(literals_[state]->code(signal) ^ value, group);
}

void StateFormula::add_not_excited(std::size_t state, std::uint32_t signal, bool value,
                                   sat::ClauseGroup group) {
  const sat::Lit already = literals_[state]->code(signal) ^ !value;
  formula_.add_binary(~literals_[state]->excited(signal), already, group);
}

Region StateFormula::region(std::size_t state, std::uint32_t signal) {
  const bool is_high = formula_.is_true(literals_[state]->code(signal));
  if (formula_.is_true(literals_[state]->excited(signal))) {
    return is_high ? Region::falling : Region::rising;
  }
  return is_high ? Region::stable_high : Region::stable_low;
}

}  // namespace vorel::configuration
