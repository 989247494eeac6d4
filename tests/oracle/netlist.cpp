#include "oracle/netlist.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace vorel::oracle {
namespace {

// Identifiers, constants and signs; of an escaped identifier the name.
std::vector<std::string> tokens_of(const std::string& line) {
  constexpr std::string_view signs = "().,;=&|~";
  std::vector<std::string> tokens;
  for (std::size_t at = line.find_first_not_of(' '); at < line.size();
       at = line.find_first_not_of(' ', at)) {
    const bool is_escaped = line[at] == '\\',
               is_sign = signs.find(line[at]) != std::string_view::npos;
    const std::size_t end =
        is_sign ? at + 1
                : std::min(line.find_first_of(is_escaped ? " " : " ().,;=&|~", at), line.size());
    tokens.push_back(line.substr(at + is_escaped, end - at - is_escaped));
    at = end;
  }
  return tokens;
}

// That says nothing of gates.
bool is_other_statement(const std::string& line) {
  return std::ranges::any_of(
      std::vector{"    ", "input ", "output ", "wire ", "initial ", "end"},
      [&line](const char* start) { return line.substr(4).starts_with(start); });
}

bool is_constant(const std::string& wire) { return wire == "1'b0" || wire == "1'b1"; }

// Of the tokens of an expression of & | ~ and parentheses, with the values of its names.
class Evaluation {
 public:
  Evaluation(const std::vector<std::string>& tokens, const std::map<std::string, bool>& values)
      : tokens_{tokens}, values_{values} {}

  bool run() { return disjunction(); }

 private:
  bool accepts(const char* sign) {
    const bool is_there = at_ < tokens_.size() && tokens_[at_] == sign;
    at_ += is_there ? 1 : 0;
    return is_there;
  }
  bool disjunction() {
    bool value = conjunction();
    while (accepts("|")) value = conjunction() || value;
    return value;
  }
  bool conjunction() {
    bool value = literal();
    while (accepts("&")) value = literal() && value;
    return value;
  }
  bool literal() {
    if (accepts("~")) return !literal();
    if (accepts("(")) {
      const bool value = disjunction();
      if (!accepts(")")) throw std::runtime_error("an expression without its parenthesis");
      return value;
    }
    const std::string& name = tokens_.at(at_++);
    return is_constant(name) ? name == "1'b1" : values_.at(name);
  }

  const std::vector<std::string>& tokens_;
  const std::map<std::string, bool>& values_;
  std::size_t at_ = 0;
};

class Reader {
 public:
  explicit Reader(const std::map<std::string, toolkit::LibraryGate>& library) : library_{library} {}

  Netlist run(const std::string& module) {
    std::istringstream lines(module);
    bool is_zero_delay = false, has_values = false;
    for (std::string line; std::getline(lines, line);) {
      constexpr std::string_view keep = "(* keep *) ";
      if (const std::size_t at = line.find(keep); at == 4) line.erase(at, keep.size());
      if (has_values) read_values(line.substr(line.find("//") + 2));
      has_values = line == "    // initial values of the signals";
      if (line.starts_with("    //")) {
        is_zero_delay = line == "    // #PRAGMA: zero delay";
      } else if (line.starts_with("    assign ")) {
        add_assignment(tokens_of(line.substr(0, line.find(';'))));
      } else if (line.starts_with("        force ")) {
        // force WIRE = VALUE
        const auto tokens = tokens_of(line.substr(0, line.find(';')));
        netlist_.circuit.initial[tokens.at(1)] = tokens.at(3) == "1'b1";
      } else if (line.starts_with("    ") && !is_other_statement(line)) {
        note_instance(tokens_of(line), is_zero_delay);
        is_zero_delay = false;
      }
    }
    for (const Instance& instance : instances_) add_instance(instance);
    settle();
    return std::move(netlist_);
  }

 private:
  struct Instance {
    const toolkit::LibraryGate* gate;
    std::map<std::string, std::string> wire_at;
  };

  void note_instance(const std::vector<std::string>& tokens, bool is_zero_delay) {
    const auto gate = library_.find(tokens.at(0));
    if (gate == library_.end() || !names_.insert(tokens.at(1)).second) {
      netlist_.fault = "no gate, or an instance twice: " + tokens[0] + ' ' + tokens[1];
      return;
    }
    netlist_.area += gate->second.area;
    std::map<std::string, std::string> wire_at;
    // NAME INSTANCE ( . PIN ( WIRE ) , . PIN ( WIRE ) ) ;
    for (std::size_t i = 3; i + 3 < tokens.size(); i += 6) wire_at[tokens[i + 1]] = tokens[i + 3];
    if (is_zero_delay)
      source_[wire_at[gate->second.output]] = wire_at[gate->second.pins[0]];
    else
      instances_.push_back({&gate->second, wire_at});
  }

  void add_instance(const Instance& instance) {
    std::vector<CircuitPin> pins;
    for (std::uint32_t p = 0; p < instance.gate->input_count(); ++p)
      pins.push_back(pin_at(instance.wire_at.at(instance.gate->pins[p])));
    add_gate(netlist_.circuit, *instance.gate, instance.wire_at.at(instance.gate->output), pins);
  }

  CircuitPin pin_at(std::string wire) {
    bool is_inverted = false;
    std::size_t length = 0;
    for (auto source = source_.find(wire); source != source_.end(); source = source_.find(wire)) {
      wire = source->second;
      is_inverted = !is_inverted;
      if (++length <= source_.size()) continue;
      netlist_.fault = wire + " is driven in a circle that takes no time";
      break;
    }
    if (is_constant(wire)) return {"", (wire == "1'b1") != is_inverted};
    return {wire, is_inverted};
  }

  // assign WIRE = ...
  void add_assignment(const std::vector<std::string>& tokens) {
    const std::vector<std::string> expression(tokens.begin() + 3, tokens.end());
    std::set<std::string> names;
    for (const std::string& token : expression)
      if (!is_constant(token) && std::string_view("()&|~").find(token) == std::string_view::npos)
        names.insert(token);
    const std::vector<std::string> inputs(names.begin(), names.end());
    netlist_.circuit.gates.push_back(
        {tokens.at(1), inputs, [expression, inputs](const std::vector<bool>& values, bool) {
           std::map<std::string, bool> value_of;
           for (std::size_t i = 0; i < inputs.size(); ++i) value_of[inputs[i]] = values[i];
           return Evaluation(expression, value_of).run();
         }});
  }

  void read_values(const std::string& text) {
    std::istringstream values(text);
    for (std::string value; values >> value;) {
      const bool is_low = value.starts_with('!');
      netlist_.circuit.initial[value.substr(is_low ? 1 : 0)] = !is_low;
    }
  }

  // Wires whose gates have known inputs start as those make them, a latch from what the signal
  // behind its inverter says.
  void settle() {
    auto& initial = netlist_.circuit.initial;
    const std::vector<CircuitGate>& gates = netlist_.circuit.gates;
    const auto is_known = [&](const std::string& wire) { return initial.contains(wire); };
    for (std::size_t round = 0; round < gates.size(); ++round) {
      for (std::size_t g = 0; g < gates.size(); ++g) {
        const auto& [output, inputs, next_value] = gates[g];
        if (is_known(output) || !std::ranges::all_of(inputs, is_known)) continue;
        std::vector<bool> values;
        for (const std::string& wire : inputs) values.push_back(initial[wire]);
        const bool is_followed = g + 1 < gates.size() &&
                                 gates[g + 1].inputs == std::vector{output} &&
                                 is_known(gates[g + 1].output) && gates[g + 1].next({false}, false);
        initial[output] = next_value(values, is_followed && !initial[gates[g + 1].output]);
      }
    }
  }

  const std::map<std::string, toolkit::LibraryGate>& library_;
  std::set<std::string> names_;
  std::vector<Instance> instances_;
  std::map<std::string, std::string> source_;  // of the wires behind inverters without delay
  Netlist netlist_;
};

}  // namespace

Netlist read_netlist(const std::string& module,
                     const std::map<std::string, toolkit::LibraryGate>& library) {
  return Reader(library).run(module);
}

}  // namespace vorel::oracle
