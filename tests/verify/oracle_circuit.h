// tests/verify/oracle_circuit.h - a circuit as the oracle takes it.
#pragma once

#include <string>
#include <vector>

#include "oracle/circuit_states.h"
#include "verify/circuit.h"

namespace vorel::verify {

inline oracle::Circuit oracle_circuit(const Circuit& circuit) {
  oracle::Circuit result;
  for (const Gate& gate : circuit.gates) {
    std::vector<std::string> inputs;
    for (const WireId input : gate.inputs) inputs.push_back(circuit.wires[input.value].name);
    result.gates.push_back({circuit.wires[gate.output.value].name, inputs,
                            [function = gate.function](const std::vector<bool>& values, bool own) {
                              std::vector<int> all(values.begin(), values.end());
                              all.push_back(own ? 1 : 0);
                              return function.evaluate(all);
                            }});
  }
  for (const Wire& wire : circuit.wires) result.initial[wire.name] = wire.initial_value;
  return result;
}

}  // namespace vorel::verify
