#include "tools/verify_document.h"

#include <nlohmann/json.hpp>
#include <string>

#include "base/text_sink.h"

namespace vorel::tools {
namespace {

using Json = nlohmann::ordered_json;

const char* kind_of(const verify::Wire& wire, const net::Stg& stg) {
  if (!wire.signal) return "wire";
  switch (base::element(stg.signals, *wire.signal).kind) {
    case net::SignalKind::input:
      return "input";
    case net::SignalKind::output:
      return "output";
    default:
      return "internal";
  }
}

Json wires_of(const VerifyResult& result) {
  Json wires = Json::array();
  for (const verify::Wire& wire : result.circuit.wires) {
    wires.push_back({{"name", wire.name},
                     {"kind", kind_of(wire, result.stg)},
                     {"initial_value", wire.initial_value ? 1 : 0}});
  }
  return wires;
}

Json questions_of(const VerifyResult& result) {
  Json questions = Json::array();
  for (const QuestionRow& row : question_rows) {
    Json question{{"question", row.key}, {"answer", row_of(answer_to(result, row.question)).word}};
    if (const auto* const finding = finding_for(result, row.question)) {
      question["message"] = finding->message;
      question["wire"] = result.circuit.wires[finding->wire.value].name;
      question["trace"] = Json::array();
      for (const verify::TraceEdge& edge : finding->trace)
        question["trace"].push_back(edge_text(result.circuit, edge));
    }
    questions.push_back(std::move(question));
  }
  return questions;
}

Json arbiters_of(const VerifyResult& result) {
  Json arbiters = Json::array();
  const auto& wires = result.circuit.wires;
  for (const auto& [a, b] : result.verification.arbiters)
    arbiters.push_back(Json::array({wires[a.value].name, wires[b.value].name}));
  return arbiters;
}

}  // namespace

bool write_document(const VerifyResult& result, std::ostream& stream) {
  const verify::Verification& verification = result.verification;
  const Json document{
      {"program", "vorel-verify"},
      {"version", VOREL_VERSION},
      {"stg", result.request.stg},
      {"circuit", result.request.circuit},
      {"verdict", row_of(verification.verdict()).verdict},
      {"questions", questions_of(result)},
      {"arbiters", arbiters_of(result)},
      {"wires", wires_of(result)},
      {"gates", result.circuit.gates.size()},
      {"prefix",
       {{"conditions", verification.conditions},
        {"events", verification.events},
        {"cut_offs", verification.cut_offs}}},
      {"seconds", {{"reading", result.reading_seconds}, {"verifying", result.verifying_seconds}}}};
  stream << document.dump(2, ' ', false, Json::error_handler_t::replace) << std::endl;
  return stream.good() || base::report_write_failure();
}

}  // namespace vorel::tools
