// verify/circuit.h - a circuit as gates and wires, ready to be composed with an STG.
// Here:      the data.
// Not here:  where it comes from (verify/circuit_builder.h), what it does next to the STG
//            (verify/composition.h).
//
// A gate takes any time between its excitation, when its function differs from its output, and its
// edge. What is to take no time is part of the function of the gate behind it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/id.h"
#include "bdd/bdd.h"
#include "net/net.h"

namespace vorel::verify {

struct Wire {
  std::string name;
  bool initial_value = false;
  std::optional<net::SignalId> signal;  // of the STG that the wire is, if any
};
using WireId = base::Id<Wire>;

struct Gate {
  std::string name;  // of the instance, or "assign" and the output
  std::size_t line = 0;
  WireId output;
  std::vector<WireId> inputs;  // distinct, without the output
  // The next value of the output: variable i is inputs[i], the variable after them the output
  // itself. No input is without influence.
  bdd::Bdd function;
};

// Each wire is either driven by one gate or an input of the STG. All signals of the STG that are no
// dummies have a wire, but for internal ones that are hidden.
struct Circuit {
  std::vector<Wire> wires;
  std::vector<Gate> gates;  // in the order of the file
  // Outputs of mutual exclusion elements: one may take the excitation of the other away.
  std::vector<std::pair<WireId, WireId>> mutexes;
};

}  // namespace vorel::verify
