// decomposition/gate_instance.h - one gate of a mapped circuit, with all that it is connected to.
// Here:      pins, the inverters that belong to them, area, text and XML forms.
// Not here:  signals and their gates (decomposition/mapped_solution.h), which gate it is
//            (decomposition/gate_match.h).
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "bdd/bdd.h"
#include "decomposition/gate_library.h"
#include "results/xml_document.h"
#include "toolkit/logic_expr.h"

namespace vorel::decomposition {

// An inverter next to a gate. Without a name there is none.
struct Bubble {
  bool exists() const { return !name.empty(); }

  std::string wire;  // between it and the gate
  std::string name;  // of its instance
};

struct InstancePin {
  bdd::Bdd function;   // at the pin, behind the inverter
  std::string signal;  // a signal or the wire of another gate; empty: the function is a constant
  Bubble bubble;       // takes no time
};

struct GateInstance {
  bool inverted() const { return bubble.exists(); }

  std::string gate;               // in the library
  std::string name;               // its own in the netlist
  std::string output;             // the signal or wire that it drives, through the bubble if any
  std::vector<InstancePin> pins;  // the inputs in the library's order, without the feedback
  Bubble bubble;                  // of an inverted output; takes time as a gate does
  toolkit::LogicExpr function;    // of the signals
};

// Of the gate and its inverters, in this library.
double area_of(const GateInstance& instance, const GateLibrary& library);

// "Equation: a b'; Gate: nor2; pins/inputs: a' b" around the text of the function. Wires stand by
// their names.
void print_instance(std::ostream& stream, const GateInstance& instance,
                    std::string_view function_text);
// What feeds the pin, in the same form: a wire counts as the library's buffer, an inverter takes no
// time. Of a pin that another gate feeds only the wire is told.
void print_pin(std::ostream& stream, const InstancePin& pin, const GateLibrary& library);

// A `gate` element with a `pin` for each input.
results::XmlNode* to_xml(results::XmlDocument& document, const GateInstance& instance,
                         const GateLibrary& library);

// Lines of a module: the inverters before the gate, the gate, the inverter behind it. All names can
// stand in Verilog.
void write_verilog(std::ostream& stream, const GateInstance& instance, const GateLibrary& library);

}  // namespace vorel::decomposition
