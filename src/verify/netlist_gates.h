// verify/netlist_gates.h - the gates of a module with what their outputs are about to become.
// Here:      the names of gates and ports in the library; functions of the wires they are written
//            over.
// Not here:  what takes no time (verify/zero_delay.h), whether each wire has a driver
//            (verify/circuit_builder.h).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/source_text.h"
#include "bdd/bdd.h"
#include "toolkit/library_gate.h"
#include "verify/verilog_module.h"

namespace vorel::verify {

// More are not read: what works on functions goes down them variable by variable.
inline constexpr std::size_t most_gate_inputs = 1000;

struct NetlistGate {
  std::string name;  // as in Gate
  Spot spot;
  bool zero_delay = false;
  std::uint32_t output = 0;  // a wire of the module
  VerilogExpression next;    // mentions the output where the gate sees its own value
};

// In the order of the module. nullopt after an error: an unknown gate, one that needs a clock, a
// port that is missing, unknown or connected twice.
std::optional<std::vector<NetlistGate>> netlist_gates(
    const base::SourceText& source, const VerilogModule& module,
    std::span<const toolkit::LibraryGate> library);

// A wire, or its complement.
struct WireLiteral {
  std::uint32_t wire = 0;
  bool is_inverted = false;
};

// What a gate's output becomes: variable i is inputs[i], the variable behind them the output. No
// input is without influence.
struct NetlistFunction {
  std::vector<std::uint32_t> inputs;  // distinct, without the output
  bdd::Bdd function;
};

// `stands_for[w]` is what takes the place of wire w. nullopt after the error that there are more
// inputs than most_gate_inputs.
std::optional<NetlistFunction> function_of(const base::SourceText& source, const NetlistGate& gate,
                                           std::span<const WireLiteral> stands_for);

}  // namespace vorel::verify
