#include "tools/flow_report.h"

#include <algorithm>
#include <iomanip>
#include <span>
#include <string>
#include <string_view>

#include "base/clock.h"
#include "flow/flow_words.h"
#include "verify/verification_words.h"

namespace vorel::tools {
namespace {

constexpr int key_width = 10, time_width = 7;

template <class List, class Name>
std::string joined(const List& list, Name name) {
  std::string text;
  for (const auto& element : list) text.append(text.empty() ? "" : ", ").append(name(element));
  return text;
}

std::string joined(std::span<const std::string> names) {
  return joined(names, [](const std::string& name) { return name; });
}

std::string trace_text(const flow::StgTrace& trace) {
  if (trace.empty()) return "none, it is so initially";
  return joined(trace, [](const flow::TraceStep& step) { return step.transition; });
}

class Outcome {
 public:
  Outcome(const FlowTask& task, const flow::FlowResult& result, std::ostream& stream)
      : task_{task}, result_{result}, stream_{stream} {}

  void print() const {
    for (const flow::StgFinding& finding : result_.findings) print_finding(finding);
    print_conflict();
    for (const flow::PropertyResult& property : result_.properties) print_property(property);
    if (result_.circuit) print_circuit(*result_.circuit);
    if (!result_.sentence.empty()) stream_ << '\n' << result_.sentence << '\n';
    if (!result_.hint.empty()) stream_ << "hint: " << result_.hint << '\n';
    if (result_.circuit && task_.folder.empty() && task_.document.empty())
      stream_ << "\n-o FOLDER keeps the circuit, and a report with drawings\n";
  }

 private:
  void print_finding(const flow::StgFinding& finding) const {
    stream_ << '\n' << flow::row_of(finding.gravity).key << ": " << finding.message << '\n';
    if (finding.trace) stream_ << "  trace: " << trace_text(*finding.trace) << '\n';
  }

  // The first one, if it has stayed: the report has all.
  void print_conflict() const {
    if (result_.resolution && result_.resolution->is_complete) return;
    if (!result_.coding || result_.coding->conflicts.empty() || result_.circuit) return;
    const flow::Conflict& conflict = result_.coding->conflicts.front();
    stream_ << '\n' << (conflict.is_csc ? "CSC" : "USC") << " conflict";
    if (conflict.is_csc) stream_ << " of signal " << conflict.signal;
    stream_ << ", code " << conflict.code << " (" << joined(result_.coding->code_signals) << ")\n";
    if (!conflict.common.empty())
      stream_ << "  both traces begin: " << trace_text(conflict.common) << '\n';
    print_branch("one", conflict.first, conflict.excited_first);
    print_branch("other", conflict.second, conflict.excited_second);
  }

  void print_branch(std::string_view which, const flow::StgTrace& trace,
                    std::span<const std::string> excited) const {
    stream_ << "  the " << which << ": " << (trace.empty() ? "nothing more" : trace_text(trace))
            << "; excited there: " << (excited.empty() ? "nothing" : joined(excited)) << '\n';
  }

  void print_property(const flow::PropertyResult& property) const {
    // That it makes no sense is the error that ended the run.
    if (result_.verdict == flow::Verdict::error) return;
    stream_ << "\nproperty " << property.name << ": " << flow::row_of(property.answer).key << '\n';
    if (!property.message.empty()) stream_ << "  " << property.message << '\n';
    if (property.answer != flow::PropertyAnswer::witness) return;
    for (const auto& [variable, value] : property.values)
      stream_ << "  " << variable << " = " << value << '\n';
    stream_ << "  trace: " << trace_text(property.trace) << '\n';
  }

  void print_circuit(const flow::CircuitResult& circuit) const {
    if (circuit.verification) print_wrong_answers(*circuit.verification, circuit.circuit);
    if (!task_.folder.empty()) return;
    if (!circuit.equations.empty()) stream_ << '\n';
    for (const flow::Equation& equation : circuit.equations)
      stream_ << "  " << equation.function << " = " << equation.text << '\n';
  }

  void print_wrong_answers(const verify::Verification& verification,
                           const verify::Circuit& circuit) const {
    for (const verify::Finding& finding : verification.findings) {
      stream_ << '\n'
              << verify::row_of(finding.question).title << ": no\n  " << finding.message
              << "\n  trace: ";
      stream_ << (finding.trace.empty() ? "none, it is so initially"
                                        : joined(finding.trace,
                                                 [&](const verify::TraceEdge& edge) {
                                                   return verify::edge_text(circuit, edge);
                                                 }))
              << '\n';
    }
    for (const auto& [a, b] : verification.arbiters)
      stream_ << "\narbiter: " << circuit.wires[a.value].name << ", " << circuit.wires[b.value].name
              << '\n';
  }

  const FlowTask& task_;
  const flow::FlowResult& result_;
  std::ostream& stream_;
};

}  // namespace

void print_step(const flow::StepRecord& record, std::ostream& stream) {
  stream << std::left << std::setw(key_width) << flow::row_of(record.step).key << std::right
         << std::setw(time_width) << base::format_seconds(record.seconds) << " s  " << record.text
         << std::endl;
}

void print_outcome(const FlowTask& task, const flow::FlowResult& result, std::ostream& stream) {
  Outcome(task, result, stream).print();
}

}  // namespace vorel::tools
