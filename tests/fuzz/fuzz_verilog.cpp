// Any bytes as a Verilog circuit of gates that are built in, next to one STG.
#include <set>

#include "decomposition/gate_library.h"
#include "formats/net_file.h"
#include "fuzz/fuzzing.h"
#include "verify/circuit_builder.h"

namespace vorel::fuzzing {
namespace {

const char* const c_element = R"(.inputs a b
.outputs c
.graph
a+ c+
b+ c+
c+ a- b-
a- c-
b- c-
c- a+ b+
.marking { <c-,a+> <c-,b+> }
.initial.state !a !b !c
.end
)";

bool is_input(const verify::Wire& wire) { return wire.name == "a" || wire.name == "b"; }

void require_sound(const verify::Circuit& circuit) {
  std::set<verify::WireId> driven;
  for (const verify::Gate& gate : circuit.gates) {
    require(driven.insert(gate.output).second);
    std::set<verify::WireId> inputs(gate.inputs.begin(), gate.inputs.end());
    require(inputs.size() == gate.inputs.size() && inputs.insert(gate.output).second);
    const auto variables = gate.function.support();
    require(variables.size() >= gate.inputs.size() && variables.size() <= inputs.size());
    for (std::uint32_t i = 0; i < variables.size(); ++i) require(variables[i] == i);
  }
  for (std::uint32_t i = 0; i < circuit.wires.size(); ++i)
    require(driven.contains({i}) != is_input(circuit.wires[i]));
}

}  // namespace

void fuzz_verilog(const std::string& bytes) {
  static const auto net = *formats::read_net_text(c_element, formats::NetFormat::g, "c_element");
  static const auto library = *decomposition::read_gates("");
  const auto circuit = read_or_refuse(bytes, [](const std::string& text) {
    return verify::read_circuit_text(text, "input", std::get<net::Stg>(net), library, {});
  });
  if (circuit) require_sound(*circuit);
}

}  // namespace vorel::fuzzing
