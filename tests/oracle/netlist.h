// oracle/netlist.h - a Verilog module as vorel writes it, read back as a circuit.
// Here:      instances, inverters that take no time, assignments, the initial values in the last
//            lines or in an initial block.
// Not here:  what the circuit does (oracle/circuit_states.h).
#pragma once

#include <map>
#include <string>

#include "oracle/circuit_states.h"

namespace vorel::oracle {

struct Netlist {
  Circuit circuit;    // gates in the order of the text
  double area = 0;    // of all instances
  std::string fault;  // what the text has wrong; empty if nothing
};

// Gates by name. An inverter below the pragma of zero delay belongs to the gates whose pins it
// drives. An assignment is one gate. A wire between a latch and the inverter behind it starts as
// the latch's signal says, unless it is in the list of initial values.
Netlist read_netlist(const std::string& module,
                     const std::map<std::string, toolkit::LibraryGate>& library);

}  // namespace vorel::oracle
