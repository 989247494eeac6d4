#include "report/example_results.h"

#include <stdexcept>
#include <utility>

#include "decomposition/gate_library.h"
#include "formats/g_reader.h"
#include "net/initial_values.h"
#include "unfolder/unfolder.h"
#include "verify/circuit_builder.h"
#include "verify/verifier.h"

namespace vorel::report {
namespace {

constexpr const char* read_cycle = R"(
.inputs dsr ldtack
.outputs lds d dtack
.graph
dsr+ lds+
lds+ ldtack+
ldtack+ d+
d+ dtack+
dtack+ dsr-
dsr- d-
d- dtack- lds-
dtack- dsr+
lds- ldtack-
ldtack- lds+
.marking { <dtack-,dsr+> <ldtack-,lds+> }
.end
)";

constexpr const char* resolved_cycle = R"(
.inputs dsr ldtack
.outputs lds d dtack
.internal csc
.graph
dsr+ csc+
csc+ lds+
lds+ ldtack+
ldtack+ d+
d+ dtack+
dtack+ dsr-
dsr- csc-
csc- d-
d- dtack- lds-
dtack- dsr+
lds- ldtack-
ldtack- csc+
.marking { <dtack-,dsr+> <ldtack-,csc+> }
.end
)";

// Not correct: the inverter may be late.
constexpr const char* circuit_text = R"(module vme_read(input dsr, ldtack, output lds, d, dtack);
  wire csc, slow;
  assign slow = ~ldtack;
  assign csc = dsr & (slow | csc);
  assign d = ldtack & csc;
  assign lds = csc | d;
  assign dtack = d;
endmodule
)";

net::StgPrefix prefix_of(const char* text) {
  auto stg = formats::read_g_text(text, "example.g");
  if (!stg) throw std::runtime_error("no STG");
  unfolder::Unfolder<net::Stg> unfolder(std::move(*stg), {});
  if (!unfolder.unfold()) throw std::runtime_error("no prefix");
  auto prefix = std::move(unfolder).result();
  if (!net::find_initial_values(prefix)) throw std::runtime_error("no initial values");
  return prefix;
}

// "a+ b-", by edges.
flow::StgTrace trace_of(const std::string& edges) {
  flow::StgTrace trace;
  std::size_t start = 0;
  while (start < edges.size()) {
    const std::size_t end = std::min(edges.find(' ', start), edges.size());
    const std::string edge = edges.substr(start, end - start);
    trace.push_back({edge, edge.substr(0, edge.size() - 1), edge.back() == '+'});
    start = end + 1;
  }
  return trace;
}

flow::CoreMap map_of(const net::StgPrefix& prefix, const std::vector<std::uint32_t>& core) {
  flow::CoreMap map(prefix.events.size());
  for (const std::uint32_t event : core) ++map[event];
  return map;
}

std::vector<std::uint32_t> events_of(const net::StgPrefix& prefix, const std::string& names) {
  std::vector<std::uint32_t> events;
  for (const auto& step : trace_of(names))
    for (const auto& event : prefix.events)
      if (event->transition->name == step.transition && !event->is_cut_off()) {
        events.push_back(event->index);
        break;
      }
  return events;
}

flow::Coding coding_of(const net::StgPrefix& prefix) {
  flow::Conflict conflict{.is_csc = true,
                          .signal = "lds",
                          .code = "11100",
                          .common = trace_of("dsr+ lds+ ldtack+"),
                          .first = {},
                          .second = trace_of("d+ dtack+ dsr- d- dtack- dsr+"),
                          .excited_first = {"d+"},
                          .excited_second = {"lds-"},
                          .core = events_of(prefix, "d+ dtack+ dsr- d- dtack- dsr+")};
  flow::Coding coding;
  coding.csc_cores = coding.usc_cores = 1;
  coding.core_map = map_of(prefix, conflict.core);
  coding.conflicts.push_back(std::move(conflict));
  coding.code_signals = {"dsr", "ldtack", "lds", "d", "dtack"};
  return coding;
}

flow::CircuitResult circuit_of(const net::Stg& stg) {
  const auto library = decomposition::read_gates("");
  if (!library) throw std::runtime_error("no library");
  flow::CircuitResult result;
  result.equations = {{"csc", "dsr (ldtack' + csc)", 3, {"dsr+", "ldtack-", "dsr-"}},
                      {"d", "ldtack csc", 2, {"ldtack+", "csc-"}},
                      {"lds", "csc + d", 2, {"csc+", "d-"}},
                      {"dtack", "d", 1, {"d+", "d-"}}};
  result.instances = {
      {"U1", "INV", "slow", false, {{"A", "ldtack", false}}, "ldtack'", 1},
      {"U2",
       "AO12",
       "csc",
       false,
       {{"A", "dsr"}, {"B", "slow"}, {"C", "csc"}},
       "dsr (slow + csc)",
       4.5},
      {"U3", "AND2", "d", false, {{"A", "ldtack"}, {"B", "csc"}}, "ldtack csc", 2},
      {"U4", "NAND2", "lds", false, {{"A", "csc", true}, {"B", "d", true}}, "csc + d", 2},
      {"", "", "dtack", false, {{"", "d"}}, "d", 0}};
  result.area = 9.5;
  result.module_name = "vme_read";
  result.module_text = circuit_text;
  result.testbench_text = "module vme_read_tb;\nendmodule\n";
  auto circuit = verify::read_circuit_text(circuit_text, "vme_read.v", stg, *library, {});
  if (!circuit) throw std::runtime_error("no circuit");
  result.circuit = std::move(*circuit);
  result.verification = verify::verify(stg, result.circuit);
  if (!result.verification) throw std::runtime_error("no verification");
  return result;
}

std::vector<flow::StepRecord> all_steps() {
  return {{flow::Step::read, "10 places, 10 transitions, 5 signals", 0.00031},
          {flow::Step::unfold, "11 events, 1 cut-off", 0.00064},
          {flow::Step::check, "nothing wrong", 0.0021},
          {flow::Step::coding, "1 core of a CSC conflict", 0.0017},
          {flow::Step::resolve, "one new signal", 0.034},
          {flow::Step::synthesise, "4 equations, 5 gates", 0.021},
          {flow::Step::verify, "not correct", 0.0052}};
}

}  // namespace

ExampleRun bus_controller() {
  ExampleRun run;
  run.request.stg_name = "vme_read.g";
  flow::FlowResult& result = run.result;
  result.verdict = flow::Verdict::gave_up;
  result.sentence = "no correct circuit was found";
  result.hint = "try --style complex";
  result.seconds = 0.0652;
  result.steps = all_steps();
  result.given = prefix_of(read_cycle);
  result.resolved = prefix_of(resolved_cycle);
  result.sizes = {.places = result.given->places.size(),
                  .transitions = result.given->transitions.size(),
                  .inputs = 2,
                  .outputs = 3};
  result.findings.push_back({flow::FindingKind::input_held_back,
                             flow::Gravity::warning,
                             {"dsr", "lds"},
                             "the circuit would have to hold back dsr- until lds+",
                             trace_of("dsr+ lds+ ldtack+ d+")});
  result.coding = coding_of(*result.given);
  result.resolution = flow::Resolution{
      {{true, "csc", {"csc+ before lds+", "csc- before d-"}, 12, "delay 10, triggers 2"}}, true, 0};
  result.resolved_core_map = flow::CoreMap(result.resolved->events.size());
  result.properties = {
      {"both acknowledge",
       "$P\"<dtack+,dsr->\"",
       flow::PropertyAnswer::witness,
       trace_of("dsr+ lds+ ldtack+ d+ dtack+"),
       {{"p", "<dtack+,dsr->"}},
       ""},
      {"never idle", "false", flow::PropertyAnswer::holds, {}, {}, ""},
      {"too hard", "true", flow::PropertyAnswer::undecided, {}, {}, "out of time"}};
  result.attempts = {{flow::Style::mapped, "no decomposition of csc"},
                     {flow::Style::standard_c, ""}};
  result.circuit = circuit_of(*result.resolved);
  result.warnings = {"signal d has no use for its memory"};
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
  ExampleRun run;
  run.request.stg_name = "unsafe.g";
  flow::FlowResult& result = run.result;
  result.verdict = flow::Verdict::faulty_stg;
  result.sentence = "the STG is unsafe";
  result.hint = "look at place p";
  result.sizes = {.places = 3, .transitions = 4, .inputs = 1, .outputs = 1};
  result.steps = {{flow::Step::read, "3 places", 0.0001}};
  result.findings = {{flow::FindingKind::unsafe,
                      flow::Gravity::fault,
                      {"p"},
                      "place p can get two tokens",
                      trace_of("a+ b+")},
                     {flow::FindingKind::inconsistent,
                      flow::Gravity::fault,
                      {"a"},
                      "a rises twice",
                      trace_of("a+ a+")}};
  return run;
}

ExampleRun long_traces() {
  ExampleRun run = bus_controller();
  const std::string cycle =
      "dsr+ lds+ ldtack+ d+ dtack+ dsr- d- dtack- lds- ldtack- dsr+ lds+ ldtack+ d+ dtack+ dsr- d- "
      "dtack- lds- ldtack-";
  std::string all = cycle;
  for (int i = 0; i < 10; ++i) all += " " + cycle;
  run.result.findings.front().trace = trace_of(all);
  run.result.coding->conflicts.front().common = trace_of(all);
  run.result.circuit->module_text += std::string(400, 'x') + "\n";
  run.result.findings.front().message += std::string(300, 'y');
  run.request.stg_name = std::string(200, 'z') + ".g";
  return run;
}

}  // namespace vorel::report
