// decomposition/gate_match.h - how one gate of a library implements a function.
// Here:      which function is on each pin, whether the output is inverted; area, text.
// Not here:  finding one (decomposition/gate_matcher.h).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "bdd/bdd.h"
#include "decomposition/gate_library.h"

namespace vorel::decomposition {

struct GateMatch {
  bool exists() const { return !gate.empty(); }

  std::string gate;  // its name in the library; empty: there is no match
  std::vector<bdd::Bdd>
      inputs;             // by pin, feedback left out: a variable, its complement, a constant
  bool inverted = false;  // an inverter stands behind the output
  bool operator==(const GateMatch&) const = default;
};

// Whether an inverter stands in front of a pin with this input.
inline bool is_inverted_input(const bdd::Bdd& input) {
  return !input.is_constant() && input.is_complement();
}

// The inverters before and behind the gate.
std::uint32_t inversion_count(const GateMatch& match);

// Of the gate and these inverters. The match exists, in this library.
double area_of(const GateMatch& match, const GateLibrary& library);

// "Gate: nand2 (inverted), area: 40, inputs: x0, x1'", or "UNSUCCESSFUL MATCH". Variable v is
// called names[v], or without names "x" and v.
std::string to_string(const GateMatch& match, const GateLibrary& library,
                      std::span<const std::string> names = {});

}  // namespace vorel::decomposition
