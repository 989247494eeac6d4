// verify/random_circuit.h - circuits for a small STG from a seed.
// Here:      next-state functions of its state graph as gates, split.
// Not here:  what makes them wrong (oracle/netlist_mutations.h).
#pragma once

#include <string>

#include "oracle/coding.h"
#include "oracle/random.h"

namespace vorel::verify_testing {

// A Verilog module. For each output and internal signal it has a gate, which does what the STG says
// wherever that depends on the code alone, and anything for other codes; or two or three gates in
// its place.
std::string random_module(const net::Stg& stg, const oracle::StateGraph<net::Stg>& graph,
                          const oracle::Values& initial, oracle::Random& random);

}  // namespace vorel::verify_testing
