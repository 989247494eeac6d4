// verify/circuit_builder.h - from structural Verilog to a circuit next to its STG.
// Here:      reading a file or a text, what the user may say about it.
// Not here:  the text itself (verify/verilog_parser.h), what the circuit does.
//
// A gate of the library is known by its name; what a module of the same name in the file says of it
// is not read. Positional connections are the output, then the inputs in the library's order. Each
// assignment is one gate, whatever its length.
//
// Gates below the pragma of zero delay have one input, and belong to those that read them. One that
// drives a signal of the STG stays a gate of its own, as the STG sees its edges; where a pragma
// asks for the opposite there is a warning.
//
// Initial values: of signals those of the STG, which nothing may contradict; of other wires what
// the options say, else the list at the end of the module, or its initial block. What is still open
// is the value to which gates drive the wire, or, if they do not, that at which the gates behind it
// rest: so the wire between a latch and the inverter of its output gets one.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "net/net.h"
#include "toolkit/library_gate.h"
#include "verify/circuit.h"

namespace vorel::verify {

struct InitialValue {
  std::string wire;
  bool value = false;
  bool operator==(const InitialValue&) const = default;
};

struct CircuitOptions {
  std::string top = {};               // the module; empty: the only one that is no gate's
  bool zero_delay_inverters = false;  // all, as if each stood below the pragma
  bool hide_internal = false;         // wires are no internal signals, whatever their names
  std::vector<InitialValue> initial_values = {};
  std::vector<InitialValue> constants = {};  // input ports that are no signals, such as a reset
  std::vector<std::pair<std::string, std::string>> mutexes = {};  // outputs, by names of wires
};

// nullopt after an error, which names the file and the line. The initial values of the STG are set
// (net/initial_values.h); those that are not known are found as for other wires. The gates are all
// of the library, as decomposition::read_gates gives them.
std::optional<Circuit> read_circuit(const std::string& file_name, const net::Stg& stg,
                                    std::span<const toolkit::LibraryGate> library,
                                    const CircuitOptions& options);
// `shown_name` is what messages call the text.
std::optional<Circuit> read_circuit_text(std::string_view text, const std::string& shown_name,
                                         const net::Stg& stg,
                                         std::span<const toolkit::LibraryGate> library,
                                         const CircuitOptions& options);

}  // namespace vorel::verify
