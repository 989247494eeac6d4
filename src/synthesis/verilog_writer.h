// synthesis/verilog_writer.h - derived equations as a Verilog module.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "net/net.h"
#include "synthesis/function_phase.h"
#include "synthesis/signal_solution.h"

namespace vorel::synthesis {

inline constexpr const char* module_name = "VOREL_unmapped_implementation";

// Of signal z: z_SET and z_RESET, or with a number behind where the STG has a signal of that name.
struct StandardCWires {
  std::string set, reset;
};
// By output or internal signal.
std::vector<StandardCWires> standard_c_wires(const net::Stg& stg);

// set + z reset', and that of a C-element with one inverted input: set reset' + z (set + reset').
toolkit::LogicExpr gc_equation(const std::string& signal, const toolkit::LogicExpr& set,
                               const toolkit::LogicExpr& reset);
toolkit::LogicExpr c_element_equation(const std::string& signal, const StandardCWires& wires);

// The first alternative of each function makes the circuit, the others follow as comments. For the
// styles with two functions the solutions come in pairs, SET before RESET, of the non-input signals
// in their order. Without solutions the text says so. False after an error: nothing is written if a
// signal has a name that cannot stand in Verilog.
bool write_verilog(std::ostream& stream, const net::Stg& stg, SynthesisStyle style,
                   std::span<const SignalSolution* const> solutions);

}  // namespace vorel::synthesis
