#include "synthesis/netlist_module.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <vector>

#include "base/unique_names.h"
#include "synthesis/verilog_module.h"
#include "toolkit/verilog_name.h"

namespace vorel::synthesis {
namespace {

using toolkit::verilog_name;

constexpr const char* keep = "(* keep *) ";

std::string constant(bool value) { return value ? "1'b1" : "1'b0"; }

// What no wire and no instance of the circuit is called.
std::string initial_block_name(const net::Stg& stg, const Netlist& netlist) {
  base::UniqueNames names;
  for (const std::string& name : names_of(stg, netlist)) names.add(name);
  return names.take("initial_values");
}

class ModuleText {
 public:
  ModuleText(std::ostream& stream, const net::Stg& stg, const Netlist& netlist,
             const ModuleOptions& options)
      : stream_{stream}, stg_{stg}, netlist_{netlist}, options_{options} {
    for (const NetlistGate& gate : netlist.gates) {
      if (!gate.is_instance()) assigned_.insert(gate.output);
    }
  }

  void run() {
    write_heading();
    write_ports();
    write_wires();
    for (const NetlistGate& gate : netlist_.gates) write_gate(gate);
    if (options_.reset == ResetKind::initial_block) {
      write_initial_block();
      stream_ << "endmodule\n";
    } else {
      write_module_end(stream_, initial_values());
    }
    stream_ << "\n`default_nettype wire\n";
  }

 private:
  void write_heading() {
    stream_ << "// " << netlist_.title << '\n';
    if (options_.reset == ResetKind::input)
      stream_ << "//\n// While " << netlist_.reset_input
              << " is high and the other inputs have their initial values, all wires go to\n"
                 "// theirs, which the last lines list. It has to be high until all is at rest.\n";
    stream_ << "`default_nettype none\n\n";
  }

  void write_ports() {
    stream_ << "module " << verilog_name(options_.name) << '(';
    const char* separator = "\n";
    const auto write = [&](const char* direction, const std::string& name) {
      stream_ << separator << "    " << kept(name) << direction << " wire " << verilog_name(name);
      separator = ",\n";
    };
    for (std::uint32_t i = stg_.inputs_end; i < stg_.outputs_end; ++i)
      write("output", stg_.signals[i]->name);
    for (std::uint32_t i = 0; i < stg_.inputs_end; ++i) write("input", stg_.signals[i]->name);
    if (options_.reset == ResetKind::input) write("input", netlist_.reset_input);
    stream_ << "\n);\n";
  }

  // Attributes of assignments are no Verilog.
  const char* kept(const std::string& wire) const {
    return options_.keeps_gates && assigned_.contains(wire) ? keep : "";
  }

  void write_wires() {
    const auto write = [this](const std::string& name) {
      stream_ << "    " << kept(name) << "wire " << verilog_name(name) << ";\n";
    };
    for (const NetlistGate& gate : netlist_.gates) {
      if (!is_output(gate.output)) write(gate.output);
      for (const NetlistInput& input : gate.inputs) {
        if (!input.inverter.empty()) write(input.inverted_wire);
      }
    }
  }

  bool is_output(const std::string& wire) const {
    for (std::uint32_t i = stg_.inputs_end; i < stg_.outputs_end; ++i) {
      if (stg_.signals[i]->name == wire) return true;
    }
    return false;
  }

  void write_gate(const NetlistGate& gate) {
    stream_ << '\n';
    if (!gate.comment.empty()) stream_ << "    // " << gate.comment << '\n';
    if (!gate.is_instance()) {
      stream_ << "    assign " << verilog_name(gate.output) << " = "
              << toolkit::to_standard_verilog(gate.function) << ";\n";
      return;
    }
    std::vector<std::string> inputs;
    for (const NetlistInput& input : gate.inputs) {
      if (input.wire.empty()) {
        inputs.push_back(constant(input.constant));
        continue;
      }
      inputs.push_back(verilog_name(input.inverter.empty() ? input.wire : input.inverted_wire));
      if (input.inverter.empty()) continue;
      stream_ << "    // #PRAGMA: zero delay\n";
      write_instance(netlist_.inverter, input.inverter, input.inverted_wire,
                     {verilog_name(input.wire)});
    }
    write_instance(gate.cell, gate.instance, gate.output, inputs);
  }

  // The inputs as Verilog has them.
  void write_instance(const NetlistCell& cell, const std::string& name, const std::string& output,
                      const std::vector<std::string>& inputs) {
    assert(inputs.size() == cell.pins.size());
    stream_ << "    " << (options_.keeps_gates ? keep : "") << verilog_name(cell.name) << ' '
            << verilog_name(name) << "(." << verilog_name(cell.output) << '('
            << verilog_name(output);
    for (std::size_t i = 0; i < inputs.size(); ++i)
      stream_ << "), ." << verilog_name(cell.pins[i]) << '(' << inputs[i];
    stream_ << "));\n";
  }

  std::string initial_values() const {
    std::string text = initial_values_text(stg_);
    for (const NetlistGate& gate : netlist_.gates) {
      const auto is_signal = [&gate](const auto& signal) { return signal->name == gate.output; };
      if (std::ranges::none_of(stg_.signals, is_signal))
        text += initial_value_text(gate.output, gate.initial_value);
    }
    return text;
  }

  void write_initial_block() {
    stream_ << "\n    // For simulation: all starts at its initial value, and is let go some time\n"
               "    // after the inputs are known, when gates have seen them.\n"
               "`ifndef SYNTHESIS\n    initial begin : "
            << verilog_name(initial_block_name(stg_, netlist_)) << '\n';
    for (const NetlistGate& gate : netlist_.gates)
      stream_ << "        force " << verilog_name(gate.output) << " = "
              << constant(gate.initial_value) << ";\n";
    if (stg_.inputs_end > 0) {
      stream_ << "        wait (^{";
      for (std::uint32_t i = 0; i < stg_.inputs_end; ++i)
        stream_ << (i == 0 ? "" : ", ") << verilog_name(stg_.signals[i]->name);
      stream_ << "} !== 1'bx);\n";
    }
    stream_ << "        #10;\n";
    for (const NetlistGate& gate : netlist_.gates)
      stream_ << "        release " << verilog_name(gate.output) << ";\n";
    stream_ << "    end\n`endif\n";
  }

  std::ostream& stream_;
  const net::Stg& stg_;
  const Netlist& netlist_;
  const ModuleOptions& options_;
  std::set<std::string> assigned_;
};

}  // namespace

std::string module_name_of(const Netlist& netlist, std::string_view wanted) {
  base::UniqueNames names;
  names.add(testbench_name);
  names.add(netlist.inverter.name);
  for (const NetlistGate& gate : netlist.gates) names.add(gate.cell.name);
  std::string name(wanted.empty() ? "circuit" : wanted);
  std::ranges::replace_if(
      name, [](char c) { return c <= ' ' || c > '~'; }, '_');
  return names.take(name);
}

bool write_module(std::ostream& stream, const net::Stg& stg, const Netlist& netlist,
                  const ModuleOptions& options) {
  assert((options.reset == ResetKind::input) == !netlist.reset_input.empty());
  if (!names_can_stand_in_verilog(stg)) return false;
  ModuleText(stream, stg, netlist, options).run();
  return true;
}

TestbenchSubject testbench_subject(const net::Stg& stg, const Netlist& netlist,
                                   const ModuleOptions& options) {
  TestbenchSubject subject{options.name, {}};
  for (const NetlistGate& gate : netlist.gates) {
    const auto is_signal = [&gate](const auto& signal) { return signal->name == gate.output; };
    if (std::ranges::none_of(stg.signals, is_signal))
      subject.wires.push_back({gate.output, gate.initial_value});
    if (gate.is_instance())
      subject.delays.push_back(verilog_name(gate.instance) + '.' + gate.cell.delay_parameter);
  }
  subject.reset_input = netlist.reset_input;
  if (options.reset == ResetKind::initial_block)
    subject.initial_block = initial_block_name(stg, netlist);
  return subject;
}

}  // namespace vorel::synthesis
