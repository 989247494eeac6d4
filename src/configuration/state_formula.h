// configuration/state_formula.h - a SAT instance over one or two reachable states of a prefix.
// Here:      the encoded configurations, what is known of a signal in the current model.
// Not here:  the constraints that a derivation adds, in groups of its own.
#pragma once

#include <memory>
#include <vector>

#include "base/params.h"
#include "configuration/state_literals.h"

namespace vorel::configuration {

// Where a signal stands in a state.
enum class Region : std::uint8_t {
  rising,       // ER+: excited to rise
  stable_high,  // QR+
  falling,      // ER-
  stable_low,   // QR-
};

constexpr bool is_excited(Region region) {
  return region == Region::rising || region == Region::falling;
}
constexpr bool next_value(Region region) {
  return region == Region::rising || region == Region::stable_high;
}

// Encoded once; all later constraints are retractable, so that one instance serves all signals.
class StateFormula {
 public:
  // Keeps references to the structure and its prefix.
  StateFormula(const StateStructure& structure, const base::Params& params, std::size_t states);

  sat::CnfFormula& formula() { return formula_; }
  const sat::CnfFormula& formula() const { return formula_; }
  StateLiterals& state(std::size_t i) { return *literals_[i]; }
  const net::StgPrefix& prefix() const { return structure_.prefix(); }

  // Clauses: the signal is excited and about to take the value; it is not.
  void add_excited(std::size_t state, std::uint32_t signal, bool value, sat::ClauseGroup group);
  void add_not_excited(std::size_t state, std::uint32_t signal, bool value, sat::ClauseGroup group);

  // In the current model; the literals have been asked for before the solve.
  Region region(std::size_t state, std::uint32_t signal);

 private:
  const StateStructure& structure_;
  sat::CnfFormula formula_;
  std::vector<std::unique_ptr<ConfigurationVars<net::StgPrefix>>> configurations_;
  std::vector<std::unique_ptr<StateLiterals>> literals_;
};

}  // namespace vorel::configuration
