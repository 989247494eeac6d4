#include "decomposition/gate_models.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "base/source_text.h"
#include "base/unique_names.h"
#include "decomposition/gate_library.h"
#include "toolkit/verilog_name.h"

namespace vorel::decomposition {
namespace {

// What binds stronger has the greater number.
enum class Binding : std::uint8_t { disjunction, exclusive_or, conjunction, operand };

struct Term {
  std::string text;
  Binding binding;

  std::string as_part_of(Binding outer) const { return binding < outer ? '(' + text + ')' : text; }
};

struct TermAlgebra {
  const toolkit::LibraryGate& gate;

  Term constant(bool value) const { return {value ? "1'b1" : "1'b0", Binding::operand}; }
  Term pin(std::uint32_t p) const {
    return {toolkit::verilog_name(gate.is_feedback(p) ? gate.output : gate.pins[p]),
            Binding::operand};
  }
  Term negation(const Term& a) const {
    return {'~' + a.as_part_of(Binding::operand), Binding::operand};
  }
  Term conjunction(const Term& a, const Term& b) const {
    return joined(a, " & ", b, Binding::conjunction);
  }
  Term disjunction(const Term& a, const Term& b) const {
    return joined(a, " | ", b, Binding::disjunction);
  }
  Term exclusive_or(const Term& a, const Term& b) const {
    return joined(a, " ^ ", b, Binding::exclusive_or);
  }
  static Term joined(const Term& a, const char* sign, const Term& b, Binding binding) {
    return {a.as_part_of(binding) + sign + b.as_part_of(binding), binding};
  }
};

bool is_inverter(const toolkit::LibraryGate& gate) {
  return gate.pin_count() == 1 && toolkit::truth_table(gate.function, 1).front() % 4 == 1;
}

// With a net type, ports can stand where undeclared nets are errors.
void write_model(std::ostream& stream, const toolkit::LibraryGate& gate, const char* net_type) {
  std::string inputs;
  for (std::uint32_t pin = 0; pin < gate.input_count(); ++pin) {
    inputs += (pin == 0 ? "" : ", ") + toolkit::verilog_name(gate.pins[pin]);
  }
  const std::string output = toolkit::verilog_name(gate.output);
  const std::string delay = delay_parameter(gate);
  stream << "\nmodule " << toolkit::verilog_name(gate.name) << '(' << output
         << (inputs.empty() ? "" : ", ") << inputs << ");\n    output " << net_type << output
         << ";\n";
  if (!inputs.empty()) stream << "    input " << net_type << inputs << ";\n";
  stream << "    parameter " << delay << " = " << (is_inverter(gate) ? 0 : 1) << ";\n    assign #"
         << delay << ' ' << output << " = "
         << toolkit::value_of<Term>(gate.function, TermAlgebra{gate}).text << ";\nendmodule\n";
}

}  // namespace

bool names_can_stand_in_verilog(const toolkit::LibraryGate& gate) {
  std::vector<std::string> names = gate.pins;
  names.push_back(gate.name);
  names.push_back(gate.output);
  const auto bad = std::ranges::find_if_not(names, toolkit::can_stand_in_verilog);
  if (bad == names.end()) return true;
  return toolkit::report_not_for_verilog("gate " + base::quoted(gate.name) + ": the name", *bad);
}

std::string delay_parameter(const toolkit::LibraryGate& gate) {
  base::UniqueNames names;
  names.add(gate.output);
  for (std::uint32_t pin = 0; pin < gate.input_count(); ++pin) names.add(gate.pins[pin]);
  return names.take("delay");
}

bool write_gate_models(std::ostream& stream, std::span<const toolkit::LibraryGate> gates) {
  std::vector<const toolkit::LibraryGate*> usable;
  for (const toolkit::LibraryGate& gate : gates) {
    if (!is_usable(gate)) continue;
    if (!names_can_stand_in_verilog(gate)) return false;
    usable.push_back(&gate);
  }
  stream
      << "// Simulation models of library gates, made by vorel-gates.\n"
         "//\n"
         "// An output follows the inputs after `delay`, which is 0 for inverters, as those in\n"
         "// front of gates take no time, and 1 for all other gates. Other delays are told by\n"
         "// defparam. A latch does not know its initial value: force the signals of the netlist\n"
         "// to the values that it lists in its last lines, apply the inputs, and release them.\n";
  for (const toolkit::LibraryGate* gate : usable) write_model(stream, *gate, "");
  return true;
}

void write_gate_models_of(std::ostream& stream, const synthesis::Netlist& netlist,
                          std::string_view module_name,
                          std::span<const toolkit::LibraryGate> gates) {
  std::set<std::string_view> used;
  for (const synthesis::NetlistGate& gate : netlist.gates) {
    if (gate.is_instance()) used.insert(gate.cell.name);
    const auto has_inverter = [](const auto& input) { return !input.inverter.empty(); };
    if (std::ranges::any_of(gate.inputs, has_inverter)) used.insert(netlist.inverter.name);
  }
  if (used.empty()) return;
  stream << "// Simulation models of the gates of " << module_name
         << ".\n//\n"
            "// An output follows the inputs after `delay`, which is 0 for inverters, as those in\n"
            "// front of gates take no time, and 1 for all other gates. Other delays are told by\n"
            "// defparam.\n`default_nettype none\n";
  for (const toolkit::LibraryGate& gate : gates) {
    if (used.contains(gate.name)) write_model(stream, gate, "wire ");
  }
  stream << "\n`default_nettype wire\n";
}

}  // namespace vorel::decomposition
