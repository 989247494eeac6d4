// synthesis/verilog_module.h - the frame of a module that implements an STG.
// Here:      which names can be written; ports; the list of initial values; the end; the choice
//            between a module and other results.
// Not here:  what the module is made of (synthesis/verilog_writer.h).
//
// Outputs and inputs are ports, internal signals are not. Names are escaped where Verilog asks for
// it (toolkit/verilog_name.h), but stand as they are in comments that are no Verilog either.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include "net/net.h"
#include "results/report.h"

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

// Writes a module; false after an error.
using ModuleWriter = std::function<bool(std::ostream&)>;

// Delivers the report, but a module if the output is named *.v, to the standard error stream with a
// warning if that cannot be opened. The sentence goes to the standard output then. Of a failed run
// there is no document, only the sentence.
void deliver_with_module(const results::Report& report, const results::VerdictMessages& messages,
                         const std::string& output, const ModuleWriter& write_module);

}  // namespace vorel::synthesis
