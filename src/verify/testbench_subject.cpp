#include "verify/testbench_subject.h"

#include <algorithm>
#include <cassert>

#include "base/input_text.h"
#include "base/source_text.h"
#include "decomposition/gate_models.h"
#include "toolkit/verilog_name.h"
#include "verify/verilog_parser.h"

namespace vorel::verify {

std::optional<synthesis::TestbenchSubject> read_testbench_subject(
    const std::string& file_name, const net::Stg& stg,
    std::span<const toolkit::LibraryGate> library, const CircuitOptions& options) {
  assert(!options.hide_internal);
  std::string text;
  if (!base::read_whole_file(file_name, text)) return std::nullopt;
  const auto circuit = read_circuit_text(text, file_name, stg, library, options);
  if (!circuit) return std::nullopt;
  const base::SourceText source(text, file_name);
  const auto find_gate = [library](std::string_view name) {
    return std::ranges::find(library, name, &toolkit::LibraryGate::name);
  };
  const auto module = parse_verilog(
      source, options.top, [&](std::string_view name) { return find_gate(name) != library.end(); });
  assert(module && "it has been read before");
  synthesis::TestbenchSubject subject{module->name, {}};
  subject.initial_block = module->initial_block;
  for (const VerilogGate& gate : module->gates) {
    const auto* const instance = std::get_if<VerilogInstance>(&gate.what);
    if (instance == nullptr) continue;
    if (gate.name.empty()) {
      source.report(gate.spot.offset, "a gate without a name, which no testbench can refer to");
      return std::nullopt;
    }
    subject.delays.push_back(toolkit::verilog_name(gate.name) + '.' +
                             decomposition::delay_parameter(*find_gate(instance->gate)));
  }
  for (const Gate& gate : circuit->gates) {
    const Wire& wire = circuit->wires[gate.output.value];
    if (!wire.signal) subject.wires.push_back({wire.name, wire.initial_value});
  }
  return subject;
}

}  // namespace vorel::verify
