// oracle/testbench.h - Verilog that drives a derived module as its STG allows.
// Here:      the text of the testbench.
// Not here:  running it (tests/synthesis/verilog_test.cpp).
#pragma once

#include <cstdint>
#include <string>

#include "oracle/state_graph.h"

namespace vorel::oracle {

struct TestbenchParams {
  std::uint32_t number = 0;   // stands behind the names of both modules and before what is printed
  std::uint64_t seed = 1;     // of the order in which gates and inputs act
  bool prompt_wires = false;  // wires of SET and RESET follow at once, as an arbiter needs it
};

// The module and its testbench. All signals and wires are held at their values, from the initial
// ones that the module tells; in random order inputs that the STG enables change, and assignments
// are let go one at a time, as each is assumed to be atomic. Simulation prints one line, "NUMBER: K
// edges", or "NUMBER: ..." with the first signal that changes when the STG does not let it, or does
// not when nothing else is left to happen. The STG has no dummies, and in no state two different
// edges of one signal.
std::string with_testbench(const std::string& module, const net::Stg& stg,
                           const StateGraph<net::Stg>& graph, const TestbenchParams& params);

}  // namespace vorel::oracle
