#include "decomposition/mapped_circuit.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <set>
#include <utility>

#include "base/messages.h"
#include "decomposition/gate_models.h"
#include "synthesis/verilog_module.h"

namespace vorel::decomposition {
namespace {

constexpr const char* module_name = "VOREL_mapped_implementation";
results::VerdictMessages messages(double area) {
  return {base::format_message("Logic decomposition finished (area=%.2f)", area),
          "Failed to decompose"};
}

}  // namespace

MappedCircuit::MappedCircuit(const net::Stg& stg, const GateLibrary& library)
    : stg_{stg}, library_{library} {
  for (const auto& signal : stg.signals) taken_.add(signal->name);
  for (const char* const name : {"U", "w", "IN_BUBBLE", "OUT_BUBBLE"}) taken_.add(name);
}

void MappedCircuit::add(const Deco& deco, std::vector<std::string> triggers,
                        std::span<const std::string> names) {
  assert(deco.signal == stg_.signals[stg_.inputs_end + report_.solutions.size()]->name);
  report_.add(std::make_unique<MappedSolution>(deco, std::move(triggers), library_, names, taken_));
}

const MappedSolution& MappedCircuit::solution(std::size_t number) const {
  return static_cast<const MappedSolution&>(*report_.solutions[number]);
}

double MappedCircuit::area() const {
  double area = 0;
  for (std::size_t i = 0; i < report_.solutions.size(); ++i) area += solution(i).area();
  return area;
}

bool MappedCircuit::names_can_stand() const {
  if (!synthesis::names_can_stand_in_verilog(stg_)) return false;
  std::set<std::string> gates;
  for (std::size_t i = 0; i < report_.solutions.size(); ++i) {
    gates.insert(solution(i).main_gate().gate);
    for (const GateInstance& gate : solution(i).subfunction_gates()) gates.insert(gate.gate);
  }
  gates.insert(library_.inverter_name());
  return std::ranges::all_of(gates, [this](const std::string& gate) {
    return names_can_stand_in_verilog(library_.gate(gate));
  });
}

bool MappedCircuit::write_verilog(std::ostream& stream) const {
  assert(report_.solutions.size() == stg_.internals_end - stg_.inputs_end);
  if (!names_can_stand()) return false;
  synthesis::write_module_start(stream, module_name, stg_);
  stream << base::format_message("    // mapped implementation; total area=%.2f\n", area());
  for (std::size_t i = 0; i < report_.solutions.size(); ++i) {
    stream << '\n';
    solution(i).write_verilog(stream);
  }
  synthesis::write_module_end(stream, synthesis::initial_values_text(stg_));
  return true;
}

void MappedCircuit::report(const std::string& output) const {
  synthesis::deliver_with_module(report_, messages(area()), output,
                                 [this](std::ostream& stream) { return write_verilog(stream); });
}

void report_failure(const std::string& output) {
  synthesis::deliver_with_module(results::Report(), messages(0), output, [](std::ostream& stream) {
    stream << "\nFailed to decompose\n";
    return true;
  });
}

}  // namespace vorel::decomposition
