// configuration/state_formula.h - a SAT instance over the reachable states of a prefix that serves
// many questions in turn.
// Here:      the encoded states, where a signal stands in one of them, as clauses and in a model.
// Not here:  the constraints that a question adds, in groups of its own.
#pragma once

#include "configuration/search_instance.h"

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
  // Keeps a reference to the structure.
  StateFormula(const StateStructure<net::StgPrefix>& structure, const EncodingOptions& options,
               std::size_t states);

  sat::CnfFormula& formula() { return instance_.formula(); }
  const sat::CnfFormula& formula() const { return instance_.formula(); }
  StateLiterals<net::StgPrefix>& state(std::size_t i) { return instance_.state(i); }
  const net::StgPrefix& prefix() const { return instance_.process(); }

  // Clauses: the signal is excited and about to take the value; it is not.
  void add_excited(std::size_t state, net::SignalId signal, bool value, sat::ClauseGroup group);
  void add_not_excited(std::size_t state, net::SignalId signal, bool value, sat::ClauseGroup group);

  // In the current model; the literals have been asked for before the solve.
  Region region(std::size_t state, net::SignalId signal);

 private:
  SearchInstance<net::StgPrefix> instance_;
};

}  // namespace vorel::configuration
