#include "flow/flow_words.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace vorel::flow {
namespace {

constexpr StepRow step_rows[] = {
    {Step::read, "read", "reading"},
    {Step::unfold, "unfold", "unfolding"},
    {Step::check, "check", "checking the STG"},
    {Step::properties, "properties", "answering properties"},
    {Step::coding, "coding", "looking for encoding conflicts"},
    {Step::resolve, "resolve", "resolving conflicts"},
    {Step::synthesise, "synthesise", "making the circuit"},
    {Step::verify, "verify", "verifying the circuit"},
    {Step::report, "report", "writing the report"},
};
static_assert(std::size(step_rows) == step_count);

constexpr VerdictRow verdict_rows[] = {
    {Verdict::verified, "verified"}, {Verdict::verified_with_warnings, "verified with warnings"},
    {Verdict::error, "error"},       {Verdict::faulty_stg, "faulty STG"},
    {Verdict::gave_up, "gave up"},
};

constexpr FindingRow finding_rows[] = {
    {FindingKind::unsafe, "unsafe"},
    {FindingKind::inconsistent, "inconsistent"},
    {FindingKind::not_persistent, "not_persistent"},
    {FindingKind::dead_transition, "dead_transition"},
    {FindingKind::dead_signal, "dead_signal"},
    {FindingKind::deadlock, "deadlock"},
    {FindingKind::arbitration, "arbitration"},
    {FindingKind::input_held_back, "input_held_back"},
    {FindingKind::irreducible, "irreducible"},
};

constexpr GravityRow gravity_rows[] = {
    {Gravity::note, "note"},
    {Gravity::warning, "warning"},
    {Gravity::fault, "fault"},
};

constexpr PropertyAnswerRow property_answer_rows[] = {
    {PropertyAnswer::holds, "holds"},
    {PropertyAnswer::witness, "witness"},
    {PropertyAnswer::undecided, "undecided"},
};

template <class Rows, class Field, class Value>
const auto& find_row(const Rows& rows, Field field, Value value) {
  const auto row = std::ranges::find(rows, value, field);
  assert(row != std::end(rows));
  return *row;
}

}  // namespace

const StyleRow& row_of(Style style) { return find_row(style_rows, &StyleRow::style, style); }
const StepRow& row_of(Step step) { return find_row(step_rows, &StepRow::step, step); }
const VerdictRow& row_of(Verdict verdict) {
  return find_row(verdict_rows, &VerdictRow::verdict, verdict);
}
const FindingRow& row_of(FindingKind kind) {
  return find_row(finding_rows, &FindingRow::kind, kind);
}
const GravityRow& row_of(Gravity gravity) {
  return find_row(gravity_rows, &GravityRow::gravity, gravity);
}
const PropertyAnswerRow& row_of(PropertyAnswer answer) {
  return find_row(property_answer_rows, &PropertyAnswerRow::answer, answer);
}

std::string counted(std::size_t number, std::string_view what) {
  return std::to_string(number).append(" ").append(what).append(number == 1 ? "" : "s");
}

}  // namespace vorel::flow
