#include "verify/verification_words.h"

#include <algorithm>
#include <cassert>

namespace vorel::verify {

const QuestionRow& row_of(Question question) {
  const auto row = std::ranges::find(question_rows, question, &QuestionRow::question);
  assert(row != question_rows.end());
  return *row;
}

const AnswerRow& row_of(Answer answer) {
  const auto row = std::ranges::find(answer_rows, answer, &AnswerRow::answer);
  assert(row != answer_rows.end());
  return *row;
}

Answer answer_to(const Verification& verification, Question question) {
  return verification.answers.at(static_cast<std::size_t>(question));
}

const Finding* finding_for(const Verification& verification, Question question) {
  const auto& findings = verification.findings;
  const auto finding = std::ranges::find(findings, question, &Finding::question);
  assert((finding != findings.end()) == (answer_to(verification, question) == Answer::fails));
  return finding == findings.end() ? nullptr : &*finding;
}

std::string edge_text(const Circuit& circuit, const TraceEdge& edge) {
  return circuit.wires[edge.wire.value].name + (edge.rises ? '+' : '-');
}

}  // namespace vorel::verify
