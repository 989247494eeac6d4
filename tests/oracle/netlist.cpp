#include "oracle/netlist.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string_view>
#include <vector>

namespace vorel::oracle {
namespace {

// Identifiers, constants and signs; of an escaped identifier the name.
std::vector<std::string> tokens_of(const std::string& line) {
  std::vector<std::string> tokens;
  for (std::size_t at = line.find_first_not_of(' '); at < line.size();
       at = line.find_first_not_of(' ', at)) {
    const bool is_escaped = line[at] == '\\',
               is_sign = std::string_view("().,;").find(line[at]) != std::string_view::npos;
    const std::size_t end = is_sign ? at + 1 : line.find_first_of(is_escaped ? " " : " ().,;", at);
    tokens.push_back(line.substr(at + is_escaped, end - at - is_escaped));
    at = end;
  }
  return tokens;
}

class Reader {
 public:
  explicit Reader(const std::map<std::string, toolkit::LibraryGate>& library) : library_{library} {}

  Netlist run(const std::string& module) {
    std::istringstream lines(module);
    bool is_zero_delay = false, has_values = false;
    for (std::string line; std::getline(lines, line);) {
      if (has_values) read_values(line.substr(line.find("//") + 2));
      has_values = line == "    // initial values of the signals";
      if (line.starts_with("    //")) {
        is_zero_delay = line == "    // #PRAGMA: zero delay";
      } else if (line.starts_with("    ") && !line.starts_with("    input ") &&
                 !line.starts_with("    output ")) {
        add_instance(tokens_of(line), is_zero_delay);
        is_zero_delay = false;
      }
    }
    settle();
    return std::move(netlist_);
  }

 private:
  void add_instance(const std::vector<std::string>& tokens, bool is_zero_delay) {
    const auto gate = library_.find(tokens.at(0));
    if (gate == library_.end() || !instances_.insert(tokens.at(1)).second) {
      netlist_.fault = "no gate, or an instance twice: " + tokens[0] + ' ' + tokens[1];
      return;
    }
    netlist_.area += gate->second.area;
    std::map<std::string, std::string> wire_at;
    // NAME INSTANCE ( . PIN ( WIRE ) , . PIN ( WIRE ) ) ;
    for (std::size_t i = 3; i + 3 < tokens.size(); i += 6) wire_at[tokens[i + 1]] = tokens[i + 3];
    const std::string output = wire_at[gate->second.output];
    if (is_zero_delay) {
      source_[output] = wire_at[gate->second.pins[0]];
      return;
    }
    std::vector<CircuitPin> pins;
    for (std::uint32_t p = 0; p < gate->second.input_count(); ++p)
      pins.push_back(pin_at(wire_at[gate->second.pins[p]]));
    add_gate(netlist_.circuit, gate->second, output, pins);
  }

  CircuitPin pin_at(const std::string& wire) const {
    if (wire == "1'b0" || wire == "1'b1") return {"", wire == "1'b1"};
    const auto source = source_.find(wire);
    return source == source_.end() ? CircuitPin{wire, false} : CircuitPin{source->second, true};
  }

  void read_values(const std::string& text) {
    std::istringstream values(text);
    for (std::string value; values >> value;) {
      const bool is_low = value.starts_with('!');
      const std::string name = value.substr(is_low ? 1 : 0);
      netlist_.circuit.initial[name] = !is_low;
      netlist_.circuit.declared.insert(name);
    }
  }

  // Gates stand behind those that drive them, but before the inverter that follows their output.
  void settle() {
    auto& initial = netlist_.circuit.initial;
    const std::vector<CircuitGate>& gates = netlist_.circuit.gates;
    for (std::size_t g = 0; g < gates.size(); ++g) {
      if (initial.contains(gates[g].output)) continue;
      const bool is_followed = g + 1 < gates.size() && initial.contains(gates[g + 1].output) &&
                               gates[g + 1].inputs == std::vector{gates[g].output};
      std::vector<bool> inputs;
      for (const std::string& wire : gates[g].inputs) inputs.push_back(initial[wire]);
      initial[gates[g].output] =
          gates[g].next(inputs, is_followed && !initial[gates[g + 1].output]);
    }
  }

  const std::map<std::string, toolkit::LibraryGate>& library_;
  std::set<std::string> instances_;
  std::map<std::string, std::string> source_;  // of the wires behind inverters without delay
  Netlist netlist_;
};

}  // namespace

Netlist read_netlist(const std::string& module,
                     const std::map<std::string, toolkit::LibraryGate>& library) {
  return Reader(library).run(module);
}

}  // namespace vorel::oracle
