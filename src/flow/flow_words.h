// flow/flow_words.h - the words for what a run of the flow does and finds.
// Here:      names of steps, styles, verdicts, kinds of finding, gravities, answers.
// Not here:  sentences about a run (FlowResult::sentence), whole reports (tools, report).
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "flow/flow_result.h"

namespace vorel::flow {

// All keys are unique within their table and used in documents, files and options alike.
struct StyleRow {
  Style style;
  std::string_view key;
  std::string_view title;
};
inline constexpr std::array<StyleRow, 5> style_rows = {{
    {Style::automatic, "auto", "the first that succeeds"},
    {Style::complex_gate, "complex", "complex gates"},
    {Style::generalised_c, "gc", "generalised C-elements"},
    {Style::standard_c, "stdc", "standard-C"},
    {Style::mapped, "mapped", "gates of a library"},
}};
const StyleRow& row_of(Style style);

struct StepRow {
  Step step;
  std::string_view key;
  std::string_view doing;  // while it is under way
};
const StepRow& row_of(Step step);

struct VerdictRow {
  Verdict verdict;
  std::string_view key;
};
const VerdictRow& row_of(Verdict verdict);

struct FindingRow {
  FindingKind kind;
  std::string_view key;
};
const FindingRow& row_of(FindingKind kind);

struct GravityRow {
  Gravity gravity;
  std::string_view key;
};
const GravityRow& row_of(Gravity gravity);

struct PropertyAnswerRow {
  PropertyAnswer answer;
  std::string_view key;
};
const PropertyAnswerRow& row_of(PropertyAnswer answer);

// "1 gate", "2 gates".
std::string counted(std::size_t number, std::string_view what);

}  // namespace vorel::flow
