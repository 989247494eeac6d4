#include "report/example_results.h"

#include <stdexcept>
#include <utility>

#include "flow/flow.h"
#include "formats/g_reader.h"
#include "support/run_program.h"
#include "verify/verifier.h"

namespace vorel::report {
namespace {

ExampleRun run_of(const std::string& name, const std::string& g_text,
                  flow::FlowRequest request = {}) {
  request.stg_name = name;
  auto stg = formats::read_g_text(g_text, name);
  if (!stg) throw std::runtime_error("no STG");
  flow::FlowResult result = flow::run_flow(std::move(*stg), request);
  return {std::move(request), std::move(result)};
}

}  // namespace

// The flow makes a correct circuit of it; what it says of others is put in.
ExampleRun bus_controller() {
  flow::FlowRequest request;
  request.style = flow::Style::mapped;
  request.wants_testbench = true;
  request.properties = {
      {"both acknowledge", "exists p in PLACES s.t. name p = \"<dtack+,dsr->\" { $p }"},
      {"never idle", "false"}};
  ExampleRun run =
      run_of("vme_read.g", support::read_text(support::example("vme_read.g")), request);
  flow::FlowResult& result = run.result;
  flow::CircuitResult& circuit = result.circuit.value();
  circuit.circuit.gates.at(0).function = ~circuit.circuit.gates.at(0).function;
  circuit.verification = verify::verify(*result.circuit_stg(), circuit.circuit);
  result.verdict = flow::Verdict::gave_up;
  result.sentence = "no correct circuit was found";
  result.hint = "try --style complex";
  result.findings.push_back({flow::FindingKind::input_held_back,
                             flow::Gravity::warning,
                             {"dsr", "lds"},
                             "the circuit would have to hold back dsr- until lds+",
                             result.coding->conflicts.front().second});
  result.properties.push_back(
      {"too hard", "true", flow::PropertyAnswer::undecided, {}, {}, "out of time"});
  result.attempts.push_back({flow::Style::standard_c, "no cover of csc"});
  result.warnings.push_back("signal d has no use for its memory");
  return run;
}

ExampleRun hostile_texts() {
  ExampleRun run = bus_controller();
  const std::string evil = "</code><script>alert(\"1\" + '2')</script>&amp;\xff\x01";
  run.request.stg_name = evil;
  flow::FlowResult& result = run.result;
  const auto spoil = [&](net::StgPrefix& prefix) {
    for (auto& signal : prefix.signals) signal->name = evil + signal->name;
    for (auto& transition : prefix.transitions) transition->name = evil + transition->name;
    for (auto& place : prefix.places) place->name = evil + place->name;
  };
  const auto spoil_trace = [&](flow::StgTrace& trace) {
    for (flow::TraceStep& step : trace)
      step = {evil + step.transition, evil + step.signal, step.value};
  };
  spoil(*result.given);
  spoil(*result.resolved);
  for (auto& finding : result.findings) {
    for (std::string& subject : finding.subjects) subject += evil;
    finding.message += evil;
    spoil_trace(*finding.trace);
  }
  for (auto& conflict : result.coding->conflicts) {
    conflict.signal += evil;
    for (auto* trace : {&conflict.common, &conflict.first, &conflict.second}) spoil_trace(*trace);
    conflict.excited_first.push_back(evil);
  }
  for (std::string& signal : result.coding->code_signals) signal += evil;
  for (auto& property : result.properties) {
    property.name += evil;
    property.text += evil;
    property.message += evil;
    property.values.emplace_back(evil, evil);
    spoil_trace(property.trace);
  }
  for (auto& applied : result.resolution->transformations) {
    applied.signal += evil;
    applied.parts.push_back(evil);
    applied.cost_text += evil;
  }
  for (auto& equation : result.circuit->equations) {
    equation.function += evil;
    equation.text += evil;
    equation.triggers.push_back(evil);
  }
  for (auto& instance : result.circuit->instances) {
    instance.name += evil;
    instance.gate += evil;
    instance.output += evil;
    instance.function += evil;
    for (auto& pin : instance.inputs) pin.wire += evil;
  }
  for (auto& wire : result.circuit->circuit.wires) wire.name += evil;
  for (auto& finding : result.circuit->verification->findings) finding.message += evil;
  result.circuit->inserted.push_back(evil);
  result.circuit->module_text += evil;
  result.circuit->module_name = evil;
  result.attempts.front().failure += evil;
  result.sentence = result.hint = evil;
  result.warnings.push_back(evil);
  result.errors.push_back(evil);
  for (auto& step : result.steps) step.text += evil;
  return run;
}

ExampleRun unsafe_net() {
  return run_of("unsafe.g",
                ".inputs a\n.outputs z\n.graph\na+ p z+\nz+ a+\np z-\nz- z+\n"
                ".marking {<z+,a+> <z-,z+>}\n.end\n");
}

ExampleRun long_traces() {
  ExampleRun run = bus_controller();
  flow::Conflict& conflict = run.result.coding->conflicts.front();
  for (int i = 0; i < 40; ++i)
    conflict.common.insert(conflict.common.end(), conflict.second.begin(), conflict.second.end());
  run.result.findings.front().trace = conflict.common;
  run.result.circuit->module_text += std::string(400, 'x') + "\n";
  run.result.findings.front().message += std::string(300, 'y');
  run.request.stg_name = std::string(200, 'z') + ".g";
  return run;
}

}  // namespace vorel::report
