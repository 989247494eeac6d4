// verify/random_circuit.h - circuits for a small STG, right and wrong ones, from a seed.
// Here:      next-state functions of its state graph as gates, split, mutated; the same circuit as
//            the oracle and as the verifier see it.
#pragma once

#include <string>
#include <vector>

#include "oracle/circuit_states.h"
#include "oracle/random.h"
#include "verify/circuit.h"

namespace vorel::verify_testing {

// A gate as a table of next values: bit i of the row is input i, the bit after them the output.
struct TableGate {
  std::string output;
  std::vector<std::string> inputs;
  std::vector<bool> next;
};
using TableCircuit = std::vector<TableGate>;

// One gate for each output and internal signal, which does what the STG says wherever that depends
// on the code alone, and anything for other codes.
TableCircuit random_circuit(const net::Stg& stg, const oracle::StateGraph<net::Stg>& graph,
                            const oracle::Values& initial, oracle::Random& random);

// Puts a wire between two gates, or splits a gate in three around a C-element.
void split(TableCircuit& circuit, oracle::Random& random);
// An entry flipped, an input inverted, two inputs swapped.
void mutate(TableCircuit& circuit, oracle::Random& random);

oracle::Circuit oracle_circuit(const TableCircuit& circuit);
// Wires that are no signals start as in the oracle: with signals at their initial values, as often
// as there are gates, those that are not at rest flip.
verify::Circuit circuit_of(const TableCircuit& circuit, const net::Stg& stg,
                           const oracle::Values& initial);

}  // namespace vorel::verify_testing
