// verify/verification_words.h - the words for what is proved of a circuit.
// Here:      names of questions and answers, the finding that belongs to a question, edges as text.
// Not here:  whole reports and documents (tools, report).
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "verify/circuit.h"
#include "verify/verification.h"

namespace vorel::verify {

struct QuestionRow {
  Question question;
  std::string_view title;  // to which the answer is yes or no
  std::string_view key;    // in documents
};
inline constexpr std::array<QuestionRow, question_count> question_rows = {{
    {Question::initial_state, "initial state", "initial_state"},
    {Question::conformance, "conformance", "conformance"},
    {Question::hazard, "no hazard", "no_hazard"},
    {Question::progress, "progress", "progress"},
    {Question::deadlock, "no deadlock", "no_deadlock"},
}};

struct AnswerRow {
  Answer answer;
  std::string_view word;     // of one question
  std::string_view verdict;  // if it is that of all questions, in documents
  std::string_view sentence;
};
inline constexpr std::array<AnswerRow, 3> answer_rows = {{
    {Answer::holds, "yes", "correct", "the circuit is correct"},
    {Answer::fails, "no", "not correct", "the circuit is not correct"},
    {Answer::undecided, "undecided", "undecided",
     "undecided: a limit was reached before an answer"},
}};

const QuestionRow& row_of(Question question);
const AnswerRow& row_of(Answer answer);

Answer answer_to(const Verification& verification, Question question);
// Null unless the answer is no.
const Finding* finding_for(const Verification& verification, Question question);

// "a+"
std::string edge_text(const Circuit& circuit, const TraceEdge& edge);

}  // namespace vorel::verify
