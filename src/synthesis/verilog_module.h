// synthesis/verilog_module.h - the frame of a module that implements an STG.
// Here:      which names can be written; ports; the list of initial values; the end.
// Not here:  what the module is made of (synthesis/verilog_writer.h).
//
// Outputs and inputs are ports, internal signals are not. Names are escaped where Verilog asks for
// it (toolkit/verilog_name.h), but stand as they are in comments that are no Verilog either.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "net/net.h"

namespace vorel::synthesis {

// False after an error: there is a signal, other than a dummy, whose name cannot stand in Verilog.
bool names_can_stand_in_verilog(const net::Stg& stg);

// "module NAME(...);", the declarations of the ports, and an empty line.
void write_module_start(std::ostream& stream, std::string_view name, const net::Stg& stg);

// " NAME" or " !NAME", to be appended to others.
std::string initial_value_text(std::string_view name, bool value);

// These for all signals in their order, dummies left out. An unknown value counts as 0.
std::string initial_values_text(const net::Stg& stg);

// An empty line, the comment with the initial values, "endmodule".
void write_module_end(std::ostream& stream, std::string_view initial_values);

}  // namespace vorel::synthesis
