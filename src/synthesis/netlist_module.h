// synthesis/netlist_module.h - a netlist as a Verilog module that simulators and synthesisers take.
// Here:      the text, the name of the module, what a testbench asks of it.
// Not here:  the netlist (synthesis/netlist.h), the modules of vorel itself
//            (synthesis/verilog_writer.h), testbenches (synthesis/testbench.h).
//
// Every wire is declared, and undeclared ones are not allowed. An attribute of keep stands with
// each gate: at its instance, or, as assignments take none, at the wire. An initial block forces
// all wires to their initial values until the inputs are known, and some time more; what makes
// logic of the text does not see it.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "net/net.h"
#include "synthesis/module_options.h"
#include "synthesis/netlist.h"
#include "synthesis/testbench.h"

namespace vorel::synthesis {

// The wanted name with "_" for what cannot stand in Verilog, and with a number behind it where a
// cell or the testbench is called so.
std::string module_name_of(const Netlist& netlist, std::string_view wanted);

// The options' name is one of module_name_of; with ResetKind::input the reset has been added. False
// after an error, with nothing written: a signal has a name that cannot stand in Verilog.
bool write_module(std::ostream& stream, const net::Stg& stg, const Netlist& netlist,
                  const ModuleOptions& options);

// Of the module that write_module makes of the same.
TestbenchSubject testbench_subject(const net::Stg& stg, const Netlist& netlist,
                                   const ModuleOptions& options);

}  // namespace vorel::synthesis
