#include "report/verification_document.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "verify/verification_words.h"

namespace vorel::report {
namespace {

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

}  // namespace

Json questions_of(const verify::Circuit& circuit, const verify::Verification& verification) {
  Json questions = Json::array();
  for (const verify::QuestionRow& row : verify::question_rows) {
    const verify::Answer answer = verify::answer_to(verification, row.question);
    Json question{{"question", row.key}, {"answer", verify::row_of(answer).word}};
    if (const auto* const finding = verify::finding_for(verification, row.question)) {
      question["message"] = finding->message;
      question["wire"] = circuit.wires[finding->wire.value].name;
      question["trace"] = Json::array();
      for (const verify::TraceEdge& edge : finding->trace)
        question["trace"].push_back(verify::edge_text(circuit, edge));
    }
    questions.push_back(std::move(question));
  }
  return questions;
}

Json arbiters_of(const verify::Circuit& circuit, const verify::Verification& verification) {
  Json arbiters = Json::array();
  for (const auto& [a, b] : verification.arbiters)
    arbiters.push_back(Json::array({circuit.wires[a.value].name, circuit.wires[b.value].name}));
  return arbiters;
}

Json wires_of(const verify::Circuit& circuit, const net::Stg& stg) {
  Json wires = Json::array();
  for (const verify::Wire& wire : circuit.wires) {
    wires.push_back({{"name", wire.name},
                     {"kind", kind_of(wire, stg)},
                     {"initial_value", wire.initial_value ? 1 : 0}});
  }
  return wires;
}

Json composition_of(const verify::Verification& verification) {
  return {{"conditions", verification.conditions},
          {"events", verification.events},
          {"cut_offs", verification.cut_offs}};
}

}  // namespace vorel::report
