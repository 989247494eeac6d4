#include "flow/verdict.h"

#include <algorithm>
#include <cassert>
#include <utility>
#include <vector>

#include "flow/flow_words.h"

namespace vorel::flow {
namespace {

using verify::Answer;

struct End {
  Verdict verdict;
  std::string sentence;
  std::string hint;
};

const StgFinding& first_fault(const FlowResult& result) {
  const auto fault = std::ranges::find(result.findings, Gravity::fault, &StgFinding::gravity);
  assert(fault != result.findings.end() && "who ends a run by a fault tells it");
  return *fault;
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// What can be done about a fault of the STG.
std::string cure_of(const StgFinding& fault) {
  const std::string subject = fault.subjects.empty() ? "" : fault.subjects.front();
  switch (fault.kind) {
    case FindingKind::unsafe:
      return "follow the trace, and let what puts the second token on " + subject +
             " wait until the first is gone";
    case FindingKind::inconsistent:
      return "follow the trace: between two rising edges of " + subject +
             " there has to be a falling one, and the first has to fit the initial value";
    case FindingKind::not_persistent:
      return "let the edge of " + (fault.subjects.size() > 1 ? fault.subjects[1] : "the input") +
             " wait until " + subject +
             " has changed, or make both outputs of an arbiter if the choice is the circuit's";
    case FindingKind::irreducible:
      return "let an output or internal signal change between these inputs, or tell the states "
             "apart by another input";
    default:
      return "follow the trace of the finding";
  }
}

End of_fault(const FlowResult& result) {
  const StgFinding& fault = first_fault(result);
  return {Verdict::faulty_stg, "the STG is at fault: " + fault.message, cure_of(fault)};
}

End of_error(const FlowResult& result) {
  assert(!result.errors.empty() && "who ends a run by an error tells it");
  const std::string& error = result.errors.front();
  return {Verdict::error, "the input has an error: " + error.substr(0, error.find('\n')),
          result.sizes.outputs + result.sizes.internals == 0
              ? "declare the signals that the circuit is to drive as .outputs or .internal"
              : "put it right as the error says"};
}

End of_limit(const FlowRequest& request, const std::string& reason) {
  std::string options;
  if (request.limits.max_events != 0) options = "a larger --max-events";
  if (request.limits.max_seconds != 0)
    options += std::string(options.empty() ? "" : " and ") + "a longer --timeout";
  return {Verdict::gave_up, "gave up: " + reason,
          options.empty() ? "look at the warnings" : "try again with " + options};
}

// Signals with a conflict, as far as they have been listed.
std::string conflicting_signals(const FlowResult& result) {
  std::vector<std::string> names;
  for (const Conflict& conflict : result.coding->conflicts)
    if (conflict.is_csc && std::ranges::find(names, conflict.signal) == names.end())
      names.push_back(conflict.signal);
  return joined(names);
}

End of_unwanted_conflicts(const FlowResult& result) {
  return {Verdict::gave_up,
          "gave up: there are encoding conflicts of " + conflicting_signals(result),
          "leave --no-resolve out, or insert a signal that tells the conflicting states apart"};
}

End of_conflicts(const FlowRequest& request, const FlowResult& result) {
  const ResolutionRequest& resolution = request.resolution;
  std::string options;
  if (resolution.concurrent_insertions < 2) options = "--insertions 2";
  if (!resolution.with_reductions)
    options += std::string(options.empty() ? "" : " or ") + "--reduce";
  const std::string by_hand =
      "insert a signal by hand that changes between the states of the conflicts of " +
      conflicting_signals(result);
  return {Verdict::gave_up,
          "gave up: encoding conflicts are left (" +
              counted(result.resolution->cores_left, "core") + ")",
          options.empty() ? by_hand : "try " + options + ", or " + by_hand};
}

std::string other_styles(const FlowRequest& request) {
  switch (request.style) {
    case Style::automatic:
      return "try --style gc, or look at the trace of the verification";
    case Style::mapped:
      return "try --style stdc, or a library with more gates (--lib)";
    case Style::complex_gate:
      return "look at the findings about the STG: complex gates fail only where it does";
    default:
      return "try --style complex, whose gates have no hazards of their own";
  }
}

// What several attempts say alike stands once.
std::string failures_of(const FlowResult& result) {
  std::string text;
  std::string_view last;
  for (const Attempt& attempt : result.attempts) {
    if (attempt.failure == last) continue;
    text += (text.empty() ? "" : "; ") + attempt.failure;
    last = attempt.failure;
  }
  return text;
}

bool has_warnings(const FlowResult& result) {
  return !result.warnings.empty() ||
         std::ranges::any_of(result.findings, [](const StgFinding& finding) {
           return finding.gravity == Gravity::warning;
         });
}

End of_circuit(const FlowRequest& request, const FlowResult& result) {
  const auto& circuit = result.circuit;
  if (!circuit || !circuit->verification)
    return {Verdict::gave_up, "gave up: no circuit found; " + failures_of(result),
            other_styles(request)};
  switch (circuit->verification->verdict()) {
    case Answer::fails:
      return {Verdict::gave_up, "gave up: no correct circuit found; " + failures_of(result),
              other_styles(request)};
    case Answer::undecided:
      return of_limit(request, "whether the circuit is correct is undecided");
    case Answer::holds:
      break;
  }
  if (has_warnings(result))
    return {Verdict::verified_with_warnings, "the circuit is verified; there are warnings", ""};
  return {Verdict::verified, "the circuit is verified", ""};
}

End end_of(Ending ending, const FlowRequest& request, const std::string& reason,
           const FlowResult& result) {
  switch (ending) {
    case Ending::error:
      return of_error(result);
    case Ending::faulty_stg:
      return of_fault(result);
    case Ending::limit:
      return of_limit(request, reason);
    case Ending::conflicts_unwanted:
      return of_unwanted_conflicts(result);
    case Ending::conflicts_left:
      return of_conflicts(request, result);
    case Ending::circuit:
      break;
  }
  return of_circuit(request, result);
}

}  // namespace

void conclude(Ending ending, const FlowRequest& request, const std::string& reason,
              FlowResult& result) {
  End end = end_of(ending, request, reason, result);
  result.verdict = end.verdict;
  result.sentence = std::move(end.sentence);
  result.hint = std::move(end.hint);
  assert((result.verdict > Verdict::verified_with_warnings) == !result.hint.empty());
}

}  // namespace vorel::flow
