#include "tools/verify_report.h"

#include "base/clock.h"
#include "verify/verification_words.h"

namespace vorel::tools {
namespace {

void print_finding(const verify::Circuit& circuit, const verify::Finding& finding,
                   std::ostream& stream) {
  stream << "  " << finding.message << "\n  trace: ";
  if (finding.trace.empty()) stream << "none, it is so initially";
  const char* separator = "";
  for (const verify::TraceEdge& edge : finding.trace) {
    stream << separator << verify::edge_text(circuit, edge);
    separator = ", ";
  }
  stream << '\n';
}

}  // namespace

void print_report(const VerifyResult& result, std::ostream& stream) {
  const verify::Circuit& circuit = result.circuit;
  const verify::Verification& verification = result.verification;
  if (!result.stopped_while.empty()) {
    stream << "\ntime was over while " << result.stopped_while << "\n\n";
  } else if (result.stg_is_known) {
    stream << "\ncircuit: " << circuit.gates.size() << " gate(s), " << circuit.wires.size()
           << " wire(s)\n |B|=" << verification.conditions << " |E|=" << verification.events
           << " |C|=" << verification.cut_offs << "\n\n";
  } else {
    stream << "\ncircuit: not read, the STG alone goes beyond a limit\n\n";
  }
  for (const verify::QuestionRow& row : verify::question_rows) {
    stream << row.title << ": "
           << verify::row_of(verify::answer_to(verification, row.question)).word << '\n';
    if (const auto* const finding = verify::finding_for(verification, row.question))
      print_finding(circuit, *finding, stream);
  }
  for (const auto& [a, b] : verification.arbiters)
    stream << "arbiter: " << circuit.wires[a.value].name << ", " << circuit.wires[b.value].name
           << '\n';
  stream << '\n'
         << verify::row_of(verification.verdict()).sentence
         << "\n\n Reading/Verifying time: " << base::format_seconds(result.reading_seconds) << '/'
         << base::format_seconds(result.verifying_seconds) << '\n';
}

}  // namespace vorel::tools
