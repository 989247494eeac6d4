// synthesis/module_options.h - how a Verilog module is to look for other tools.
// Here:      the options as plain data.
// Not here:  modules (synthesis/verilog_module.h).
#pragma once

#include <cstdint>
#include <string>

namespace vorel::synthesis {

enum class ResetKind : std::uint8_t {
  none,           // initial values stand in a comment only
  initial_block,  // an `initial` block sets them
  input,          // an input, high while the circuit is to be in its initial state
};

struct ModuleOptions {
  std::string name;  // of the module
  ResetKind reset = ResetKind::initial_block;
  std::string reset_input;  // its name
  bool keeps_gates = true;  // (* keep *) before each gate
};

}  // namespace vorel::synthesis
