#include "decomposition/gate_instance.h"

#include <algorithm>
#include <cassert>

#include "toolkit/verilog_name.h"

namespace vorel::decomposition {
namespace {

// As Verilog has it, in XML too.
std::string connection(const InstancePin& pin) {
  if (pin.signal.empty()) return pin.function.is_true() ? "1'b1" : "1'b0";
  return pin.signal;
}

std::string input_text(const InstancePin& pin) {
  if (pin.signal.empty()) return pin.function.is_true() ? "1" : "0";
  return pin.signal + (pin.bubble.exists() ? "'" : "");
}

const char* truth_text(bool value) { return value ? "true" : "false"; }

class InstanceWriter {
 public:
  InstanceWriter(std::ostream& stream, const GateLibrary& library)
      : stream_{stream}, library_{library} {}

  void write(const GateInstance& instance) {
    std::vector<std::string> inputs;
    for (const InstancePin& pin : instance.pins) {
      if (pin.bubble.exists()) {
        stream_ << "    // #PRAGMA: zero delay\n";
        write_inverter(pin.bubble.name, pin.bubble.wire, pin.signal);
      }
      inputs.push_back(
          pin.signal.empty()
              ? connection(pin)
              : toolkit::verilog_name(pin.bubble.exists() ? pin.bubble.wire : pin.signal));
    }
    write_line(instance.gate, instance.name,
               instance.inverted() ? instance.bubble.wire : instance.output, inputs);
    if (instance.inverted())
      write_inverter(instance.bubble.name, instance.output, instance.bubble.wire);
  }

 private:
  void write_inverter(const std::string& name, const std::string& output,
                      const std::string& input) {
    write_line(library_.inverter_name(), name, output, {toolkit::verilog_name(input)});
  }

  // The inputs as they stand in Verilog.
  void write_line(const std::string& gate_name, const std::string& name, const std::string& output,
                  const std::vector<std::string>& inputs) {
    const toolkit::LibraryGate& gate = library_.gate(gate_name);
    assert(inputs.size() == gate.input_count());
    stream_ << "    " << toolkit::verilog_name(gate_name) << ' ' << toolkit::verilog_name(name)
            << "(." << toolkit::verilog_name(gate.output) << '(' << toolkit::verilog_name(output);
    for (std::size_t i = 0; i < inputs.size(); ++i)
      stream_ << "), ." << toolkit::verilog_name(gate.pins[i]) << '(' << inputs[i];
    stream_ << "));\n";
  }

  std::ostream& stream_;
  const GateLibrary& library_;
};

}  // namespace

double area_of(const GateInstance& instance, const GateLibrary& library) {
  const auto has_bubble = [](const InstancePin& pin) { return pin.bubble.exists(); };
  const auto inverters = std::ranges::count_if(instance.pins, has_bubble);
  return library.area(instance.gate) +
         static_cast<double>(inverters + (instance.inverted() ? 1 : 0)) * library.inverter_area();
}

void print_instance(std::ostream& stream, const GateInstance& instance,
                    std::string_view function_text) {
  stream << "Equation: " << function_text << "; Gate: " << instance.gate
         << (instance.inverted() ? " (inverted)" : "") << "; pins/inputs:";
  for (const InstancePin& pin : instance.pins) stream << ' ' << input_text(pin);
}

void print_pin(std::ostream& stream, const InstancePin& pin, const GateLibrary& library) {
  stream << "Equation: " << input_text(pin);
  if (pin.signal.empty()) return;
  if (pin.bubble.exists()) {
    stream << "; Gate: " << library.inverter_name() << "; #PRAGMA: zero delay";
  } else {
    stream << "; Gate: " << library.buffer_name();
  }
  stream << "; pins/inputs: " << pin.signal;
}

results::XmlNode* to_xml(results::XmlDocument& document, const GateInstance& instance,
                         const GateLibrary& library) {
  results::XmlNode* node = results::xml_element(document, "gate");
  results::xml_attribute(document, *node, "inverted", truth_text(instance.inverted()));
  results::xml_attribute(document, *node, "zero_delay",
                         truth_text(instance.gate == library.buffer_name()));
  results::xml_append_text(document, *node, instance.gate);
  const toolkit::LibraryGate& gate = library.gate(instance.gate);
  for (std::size_t i = 0; i < instance.pins.size(); ++i) {
    results::XmlNode* pin = results::xml_element(document, "pin");
    results::xml_attribute(document, *pin, "name", gate.pins[i]);
    results::xml_attribute(document, *pin, "signal", connection(instance.pins[i]));
    results::xml_attribute(document, *pin, "inverted",
                           truth_text(instance.pins[i].bubble.exists()));
    node->append_node(pin);
  }
  return node;
}

void write_verilog(std::ostream& stream, const GateInstance& instance, const GateLibrary& library) {
  InstanceWriter(stream, library).write(instance);
}

}  // namespace vorel::decomposition
