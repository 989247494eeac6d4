// tools/verify_result.h - all that a run of vorel-verify has to tell, and the words for it.
// Here:      the data, names of questions and answers.
// Not here:  its forms (tools/verify_report.h, tools/verify_document.h, flow/waveforms.h).
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "net/net.h"
#include "tools/verify_request.h"
#include "verify/circuit.h"
#include "verify/verification.h"

namespace vorel::tools {

struct VerifyResult {
  const VerifyRequest& request;
  const net::Stg& stg;
  bool stg_is_known = true;  // else it alone reached a limit, and the circuit was not read
  verify::Circuit circuit;
  verify::Verification verification;
  double reading_seconds = 0, verifying_seconds = 0;
};

struct QuestionRow {
  verify::Question question;
  std::string_view title;  // to which the answer is yes or no
  std::string_view key;    // in the document
};
inline constexpr std::array<QuestionRow, verify::question_count> question_rows = {{
    {verify::Question::initial_state, "initial state", "initial_state"},
    {verify::Question::conformance, "conformance", "conformance"},
    {verify::Question::hazard, "no hazard", "no_hazard"},
    {verify::Question::progress, "progress", "progress"},
    {verify::Question::deadlock, "no deadlock", "no_deadlock"},
}};

struct AnswerRow {
  verify::Answer answer;
  std::string_view word;     // of one question
  std::string_view verdict;  // if it is that of all questions, in the document
  std::string_view sentence;
  int exit_code;
};
inline constexpr std::array<AnswerRow, 3> answer_rows = {{
    {verify::Answer::holds, "yes", "correct", "the circuit is correct", 0},
    {verify::Answer::fails, "no", "not correct", "the circuit is not correct", 3},
    {verify::Answer::undecided, "undecided", "undecided",
     "undecided: a limit was reached before an answer", 4},
}};

const AnswerRow& row_of(verify::Answer answer);
verify::Answer answer_to(const VerifyResult& result, verify::Question question);
// Null unless the answer is no.
const verify::Finding* finding_for(const VerifyResult& result, verify::Question question);

// "a+"
std::string edge_text(const verify::Circuit& circuit, const verify::TraceEdge& edge);

}  // namespace vorel::tools
