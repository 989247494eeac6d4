#include "report/document.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "base/text_sink.h"
#include "flow/flow_words.h"
#include "report/trace_files.h"
#include "report/verification_document.h"
#include "resolution/coefficients.h"
#include "verify/verification_words.h"

namespace vorel::report {
namespace {

template <class List, class Entry>
Json list_of(const List& list, Entry entry) {
  Json all = Json::array();
  for (const auto& element : list) all.push_back(entry(element));
  return all;
}

// What is not there is null.
template <class Value, class Form>
Json null_or(const Value& value, Form form) {
  return value ? form(*value) : Json(nullptr);
}

Json request_of(const flow::FlowRequest& request) {
  Json cost = Json::object();
  for (const resolution::CoefficientRow& row : resolution::coefficient_table())
    cost[std::string(row.name)] = request.resolution.coefficients.*row.text;
  const char* reset = "none";
  if (request.module.reset == synthesis::ResetKind::initial_block) reset = "initial";
  if (request.module.reset == synthesis::ResetKind::input) reset = "input";
  return {{"style", flow::row_of(request.style).key},
          {"library", request.library},
          {"resolve", request.resolution.is_wanted},
          {"insertions", request.resolution.concurrent_insertions},
          {"reduce", request.resolution.with_reductions},
          {"cost", std::move(cost)},
          {"reset", reset},
          {"reset_input", request.module.reset_input},
          {"keep", request.module.keeps_gates},
          {"max_events", request.limits.max_events},
          {"timeout", request.limits.max_seconds},
          {"mapping_timeout", request.limits.max_mapping_seconds}};
}

Json trace_of(const flow::StgTrace& trace) {
  return list_of(trace, [](const flow::TraceStep& step) {
    Json entry{{"transition", step.transition}};
    if (!step.signal.empty()) {
      entry["signal"] = step.signal;
      entry["value"] = step.value ? 1 : 0;
    }
    return entry;
  });
}

Json sizes_of(const flow::StgSizes& sizes) {
  return {{"places", sizes.places},      {"transitions", sizes.transitions},
          {"inputs", sizes.inputs},      {"outputs", sizes.outputs},
          {"internal", sizes.internals}, {"dummies", sizes.dummies}};
}

Json prefix_of(const net::StgPrefix& prefix) {
  const auto cut_offs =
      std::ranges::count_if(prefix.events, [](const auto& event) { return event->is_cut_off(); });
  return {{"conditions", prefix.conditions.size()},
          {"events", prefix.events.size()},
          {"cut_offs", cut_offs}};
}

Json event_of(const net::StgPrefix& prefix, std::size_t event) {
  return {{"event", event}, {"transition", prefix.events.at(event)->transition->name}};
}

// Only the events that a core runs through: a prefix can have very many.
Json core_map_of(const net::StgPrefix& prefix, const flow::CoreMap& map) {
  Json events = Json::array();
  for (std::size_t e = 0; e < map.size(); ++e) {
    if (map[e] == 0) continue;
    events.push_back(event_of(prefix, e));
    events.back()["cores"] = map[e];
  }
  return events;
}

Json equation_of(const flow::Equation& equation) {
  return {{"function", equation.function},
          {"text", equation.text},
          {"literals", equation.literals},
          {"triggers", equation.triggers}};
}

Json instance_of(const flow::Instance& instance) {
  Json inputs = list_of(instance.inputs, [](const flow::Instance::Pin& pin) {
    return Json{{"pin", pin.pin}, {"wire", pin.wire}, {"inverted", pin.is_inverted}};
  });
  return {{"name", instance.name},       {"gate", instance.gate},
          {"output", instance.output},   {"output_inverted", instance.is_output_inverted},
          {"inputs", std::move(inputs)}, {"function", instance.function},
          {"area", instance.area}};
}

Json transformation_of(const flow::AppliedTransformation& transformation) {
  return {{"kind", transformation.is_insertion ? "insertion" : "reduction"},
          {"signal", transformation.signal},
          {"parts", transformation.parts},
          {"cost", transformation.cost},
          {"cost_text", transformation.cost_text}};
}

class DocumentMaker {
 public:
  DocumentMaker(const flow::FlowRequest& request, const flow::FlowResult& result,
                std::span<const std::string> files)
      : request_{request}, result_{result}, files_{files} {}

  Json run() const {
    return {{"program", "vorel-flow"},
            {"version", VOREL_VERSION},
            {"stg", request_.stg_name},
            {"verdict", flow::row_of(result_.verdict).key},
            {"exit_code", static_cast<int>(result_.verdict)},
            {"sentence", result_.sentence},
            {"hint", result_.hint},
            {"warnings", result_.warnings},
            {"errors", result_.errors},
            {"request", request_of(request_)},
            {"seconds", result_.seconds},
            {"steps", steps()},
            {"sizes", sizes_of(result_.sizes)},
            {"prefixes",
             {{"given", null_or(result_.given, prefix_of)},
              {"resolved", null_or(result_.resolved, prefix_of)},
              {"mapped", null_or(result_.mapped, prefix_of)}}},
            {"findings", findings()},
            {"properties", properties()},
            {"coding", null_or(result_.coding, [this](const auto& c) { return coding(c); })},
            {"resolution",
             null_or(result_.resolution, [this](const auto& r) { return resolution(r); })},
            {"attempts", attempts()},
            {"circuit", null_or(result_.circuit, [this](const auto& c) { return circuit(c); })},
            {"files", files_}};
  }

 private:
  void add_file(Json& entry, const std::string& name, const char* key = "vcd") const {
    if (std::ranges::find(files_, name) != files_.end()) entry[key] = name;
  }

  Json steps() const {
    return list_of(result_.steps, [](const flow::StepRecord& record) {
      return Json{{"step", flow::row_of(record.step).key},
                  {"text", record.text},
                  {"seconds", record.seconds}};
    });
  }

  Json findings() const {
    Json all = Json::array();
    for (std::size_t i = 0; i < result_.findings.size(); ++i) {
      const flow::StgFinding& finding = result_.findings[i];
      Json entry{{"kind", flow::row_of(finding.kind).key},
                 {"gravity", flow::row_of(finding.gravity).key},
                 {"subjects", finding.subjects},
                 {"message", finding.message}};
      if (finding.trace) {
        entry["trace"] = trace_of(*finding.trace);
        add_file(entry, finding_file(result_, i));
      }
      all.push_back(std::move(entry));
    }
    return all;
  }

  Json properties() const {
    Json all = Json::array();
    for (std::size_t i = 0; i < result_.properties.size(); ++i) {
      const flow::PropertyResult& property = result_.properties[i];
      Json entry{{"name", property.name},
                 {"property", property.text},
                 {"answer", flow::row_of(property.answer).key}};
      if (property.answer == flow::PropertyAnswer::witness) {
        entry["trace"] = trace_of(property.trace);
        entry["values"] = list_of(property.values, [](const auto& value) {
          return Json{{"variable", value.first}, {"value", value.second}};
        });
        add_file(entry, property_file(i));
      }
      if (!property.message.empty()) entry["message"] = property.message;
      all.push_back(std::move(entry));
    }
    return all;
  }

  Json conflict(const flow::Conflict& conflict, std::size_t i) const {
    Json entry{{"kind", conflict.is_csc ? "CSC" : "USC"},
               {"code", conflict.code},
               {"common", trace_of(conflict.common)},
               {"first", trace_of(conflict.first)},
               {"second", trace_of(conflict.second)},
               {"excited_first", conflict.excited_first},
               {"excited_second", conflict.excited_second},
               {"core", list_of(conflict.core,
                                [this](std::uint32_t e) { return event_of(*result_.given, e); })}};
    if (conflict.is_csc) entry["signal"] = conflict.signal;
    add_file(entry, conflict_file(i, Branch::first), "vcd_first");
    add_file(entry, conflict_file(i, Branch::second), "vcd_second");
    return entry;
  }

  Json coding(const flow::Coding& coding) const {
    assert(result_.given);
    Json conflicts = Json::array();
    for (std::size_t i = 0; i < coding.conflicts.size(); ++i)
      conflicts.push_back(conflict(coding.conflicts[i], i));
    return {{"usc_holds", coding.usc_holds},
            {"csc_holds", coding.csc_holds},
            {"usc_cores", coding.usc_cores},
            {"csc_cores", coding.csc_cores},
            {"code_signals", coding.code_signals},
            {"conflicts", std::move(conflicts)},
            {"core_map", core_map_of(*result_.given, coding.core_map)}};
  }

  Json resolution(const flow::Resolution& resolution) const {
    Json entry{{"complete", resolution.is_complete},
               {"cores_left", resolution.cores_left},
               {"transformations", list_of(resolution.transformations, transformation_of)}};
    if (result_.resolved && result_.resolved_core_map)
      entry["core_map"] = core_map_of(*result_.resolved, *result_.resolved_core_map);
    return entry;
  }

  Json attempts() const {
    return list_of(result_.attempts, [](const flow::Attempt& attempt) {
      return Json{{"style", flow::row_of(attempt.style).key},
                  {"taken", attempt.failure.empty()},
                  {"failure", attempt.failure}};
    });
  }

  Json verification(const verify::Verification& verification,
                    const verify::Circuit& circuit) const {
    Json questions = questions_of(circuit, verification);
    for (std::size_t i = 0; i < questions.size(); ++i)
      add_file(questions[i], question_file(verify::question_rows[i].question));
    return {{"verdict", verify::row_of(verification.verdict()).verdict},
            {"questions", std::move(questions)},
            {"arbiters", arbiters_of(circuit, verification)},
            {"wires", wires_of(circuit, *result_.circuit_stg())},
            {"gates", circuit.gates.size()},
            {"prefix", composition_of(verification)}};
  }

  Json circuit(const flow::CircuitResult& circuit) const {
    return {{"style", flow::row_of(circuit.style).key},
            {"module", circuit.module_name},
            {"area", circuit.area},
            {"inserted", circuit.inserted},
            {"equations", list_of(circuit.equations, equation_of)},
            {"instances", list_of(circuit.instances, instance_of)},
            {"verilog", circuit.module_text},
            {"models", circuit.models_text},
            {"testbench", circuit.testbench_text},
            {"verification", null_or(circuit.verification, [&](const auto& verified) {
               return verification(verified, circuit.circuit);
             })}};
  }

  const flow::FlowRequest& request_;
  const flow::FlowResult& result_;
  const std::span<const std::string> files_;
};

}  // namespace

bool write_document(const flow::FlowRequest& request, const flow::FlowResult& result,
                    std::span<const std::string> files, std::ostream& stream) {
  const Json document = DocumentMaker(request, result, files).run();
  stream << document.dump(2, ' ', false, Json::error_handler_t::replace) << std::endl;
  return stream.good() || base::report_write_failure();
}

}  // namespace vorel::report
