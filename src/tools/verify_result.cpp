#include "tools/verify_result.h"

#include <algorithm>
#include <cassert>

namespace vorel::tools {

const AnswerRow& row_of(verify::Answer answer) {
  const auto row = std::ranges::find(answer_rows, answer, &AnswerRow::answer);
  assert(row != answer_rows.end());
  return *row;
}

verify::Answer answer_to(const VerifyResult& result, verify::Question question) {
  return result.verification.answers.at(static_cast<std::size_t>(question));
}

const verify::Finding* finding_for(const VerifyResult& result, verify::Question question) {
  const auto& findings = result.verification.findings;
  const auto finding = std::ranges::find(findings, question, &verify::Finding::question);
  assert((finding != findings.end()) == (answer_to(result, question) == verify::Answer::fails));
  return finding == findings.end() ? nullptr : &*finding;
}

std::string edge_text(const verify::Circuit& circuit, const verify::TraceEdge& edge) {
  return circuit.wires[edge.wire.value].name + (edge.rises ? '+' : '-');
}

}  // namespace vorel::tools
