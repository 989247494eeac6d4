// oracle/netlist.h - a Verilog module of library gates, read back as a circuit.
// Here:      instances, inverters that take no time, the initial values in the last lines.
// Not here:  what the circuit does (oracle/circuit_states.h).
#pragma once

#include <map>
#include <string>

#include "oracle/circuit_states.h"

namespace vorel::oracle {

struct Netlist {
  Circuit circuit;
  double area = 0;    // of all instances
  std::string fault;  // what the text has wrong; empty if nothing
};

// By name. An inverter below the pragma of zero delay belongs to the gate whose pin it drives, the
// output of any other is a wire that starts where the gates rest, behind a latch as its signal
// says.
Netlist read_netlist(const std::string& module,
                     const std::map<std::string, toolkit::LibraryGate>& library);

}  // namespace vorel::oracle
