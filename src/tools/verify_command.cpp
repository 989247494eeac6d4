#include "tools/verify_command.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <optional>
#include <utility>

#include "base/clock.h"
#include "base/deadline.h"
#include "base/messages.h"
#include "base/program.h"
#include "decomposition/gate_library.h"
#include "flow/waveforms.h"
#include "formats/save_file.h"
#include "formats/vcd_writer.h"
#include "net/initial_values.h"
#include "tools/input_net.h"
#include "tools/output_names.h"
#include "tools/verify_arguments.h"
#include "tools/verify_document.h"
#include "tools/verify_report.h"
#include "unfolder/unfolder.h"

namespace vorel::tools {
namespace {

using verify::Answer;

int exit_code_of(Answer verdict) {
  switch (verdict) {
    case Answer::holds:
      return 0;
    case Answer::fails:
      return 3;
    case Answer::undecided:
      return 4;
  }
  assert(false);
  return static_cast<int>(base::severity_error);
}

class VerifyRun {
 public:
  explicit VerifyRun(const VerifyRequest& request)
      : request_{request}, deadline_{request.verifier.limits.max_seconds} {}

  // nullopt after an error.
  std::optional<Answer> run() {
    auto stg = read_stg(request_.format_name, request_.stg);
    if (!stg) return std::nullopt;
    const auto library = decomposition::read_gates(request_.library);
    if (!library) return std::nullopt;
    bool is_complete = false;
    const auto prefix = unfold(std::move(*stg), is_complete);
    if (!prefix) return std::nullopt;
    VerifyResult result{.request = request_,
                        .stg = *prefix,
                        .stg_is_known = is_complete,
                        .circuit = {},
                        .verification = {}};
    result.verification.answers.fill(Answer::undecided);
    if (is_complete && !find_answers(result, *library)) return std::nullopt;
    if (!deliver(result)) return std::nullopt;
    return result.verification.verdict();
  }

 private:
  // With initial values, if it could be unfolded to its end. nullopt after an error: it is not safe
  // or not consistent.
  std::optional<net::StgPrefix> unfold(net::Stg stg, bool& is_complete) const {
    unfolder::UnfoldOptions options;
    options.number_of_threads = request_.verifier.threads;
    options.max_events = request_.verifier.limits.max_events;
    options.max_seconds = deadline_.left();
    options.keep_incomplete = true;
    unfolder::Unfolder<net::Stg> unfolder(std::move(stg), options);
    if (!unfolder.unfold()) return std::nullopt;
    is_complete = unfolder.is_complete();
    net::StgPrefix prefix = std::move(unfolder).result();
    if (is_complete && !net::find_initial_values(prefix)) return std::nullopt;
    return prefix;
  }

  // False after an error.
  bool find_answers(VerifyResult& result, const std::vector<toolkit::LibraryGate>& library) {
    auto circuit = verify::read_circuit(request_.circuit, result.stg, library, request_.options);
    if (!circuit) return false;
    result.circuit = std::move(*circuit);
    result.reading_seconds = watch_.lap();
    verify::VerifierOptions options = request_.verifier;
    if (deadline_.is_over()) return true;
    options.limits.max_seconds = deadline_.left();
    auto verification = verify::verify(result.stg, result.circuit, options);
    if (!verification) return false;
    result.verification = std::move(*verification);
    result.verifying_seconds = watch_.lap();
    return true;
  }

  // The answers go to the standard output last: whoever sees them finds the files.
  bool deliver(const VerifyResult& result) const {
    const auto& findings = result.verification.findings;
    if (!request_.waves.empty() && !findings.empty()) {
      const bool is_written = formats::save_file(request_.waves, [&](base::OutputFile& file) {
        const auto waves = flow::waveform_of(result.stg, result.circuit, findings.front());
        return formats::write_vcd(waves, "vorel-verify " VOREL_VERSION, file.stream());
      });
      if (!is_written) return false;
    }
    if (!request_.document.empty()) {
      const bool is_written = formats::save_file(request_.document, [&](base::OutputFile& file) {
        return write_document(result, file.stream());
      });
      if (!is_written) return false;
    }
    if (!request_.quiet) print_report(result, std::cout);
    return true;
  }

  const VerifyRequest& request_;
  const base::Deadline deadline_;  // of reading, too
  base::StopWatch watch_;
};

bool files_can_be_written(const VerifyRequest& request) {
  const OutputName outputs[] = {{"--json", request.document}, {"--vcd", request.waves}};
  const InputName inputs[] = {{"is the STG", request.stg},
                              {"is the circuit", request.circuit},
                              {"is the library", request.library}};
  return can_be_written(outputs, inputs);
}

}  // namespace

int run_verify_command(int argc, char** argv) {
  base::start_program();
  const auto request = parse_verify_arguments(argc, argv);
  if (!request) return base::finish_program();
  std::optional<Answer> verdict;
  if (files_can_be_written(*request)) verdict = VerifyRun(*request).run();
  const int severity = base::finish_program();
  if (severity >= static_cast<int>(base::severity_error)) return severity;
  // Warnings show in no exit code: whoever asks for it wants the verdict.
  assert(verdict && "without an answer there was an error");
  return verdict ? exit_code_of(*verdict) : static_cast<int>(base::severity_error);
}

}  // namespace vorel::tools
