#include "tools/verify_command.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <iostream>
#include <mutex>
#include <optional>
#include <utility>

#include "base/clock.h"
#include "base/last_words.h"
#include "base/messages.h"
#include "base/program.h"
#include "decomposition/gate_library.h"
#include "flow/waveforms.h"
#include "formats/save_file.h"
#include "formats/vcd_writer.h"
#include "net/initial_values.h"
#include "tools/input_net.h"
#include "tools/output_names.h"
#include "tools/time_limit.h"
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
      : request_{request}, limit_{request.verifier.limits.max_seconds, [this] {
                                    return give_up();
                                  }} {}

  // nullopt after an error.
  std::optional<Answer> run() {
    if (base::run_failed()) return std::nullopt;
    auto stg = read_stg(request_.format_name, request_.stg);
    if (!stg) return std::nullopt;
    const auto library = decomposition::read_gates(request_.library);
    if (!library) return std::nullopt;
    phase_ = "unfolding the STG";
    bool is_complete = false;
    auto unfolded = unfold(std::move(*stg), is_complete);
    if (!unfolded) return std::nullopt;
    const auto& prefix = base::keep_to_the_end(*std::move(unfolded));
    VerifyResult result{.request = request_,
                        .stg = prefix,
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
    options.max_seconds = limit_.deadline().left();
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
    phase_ = "reading the circuit";
    auto circuit = verify::read_circuit(request_.circuit, result.stg, library, request_.options);
    if (!circuit) return false;
    result.circuit = std::move(*circuit);
    result.reading_seconds = reading_seconds_ = watch_.lap();
    phase_ = "verifying";
    verify::VerifierOptions options = request_.verifier;
    if (limit_.deadline().is_over()) return true;
    options.limits.max_seconds = limit_.deadline().left();
    auto verification = verify::verify(result.stg, result.circuit, options);
    if (!verification) return false;
    result.verification = std::move(*verification);
    result.verifying_seconds = watch_.lap();
    return true;
  }

  // Once, whoever comes first.
  bool deliver(const VerifyResult& result) {
    const std::scoped_lock lock(delivery_);
    is_delivered_ = true;
    return write(result);
  }

  // All is undecided. The others go on meanwhile, until they are about to deliver.
  std::optional<int> give_up() {
    const std::scoped_lock lock(delivery_);
    if (is_delivered_) return std::nullopt;
    base::leave_message_captures();
    // Whoever has told its failure only takes too long to clear up.
    if (base::run_failed()) return static_cast<int>(base::raise_severity(0));
    const net::Stg unknown;
    VerifyResult result{.request = request_,
                        .stg = unknown,
                        .stg_is_known = false,
                        .stopped_while = phase_.load(),
                        .circuit = {},
                        .verification = {}};
    result.verification.answers.fill(Answer::undecided);
    const double spent = limit_.deadline().spent();
    result.reading_seconds = reading_seconds_ == 0 ? spent : reading_seconds_.load();
    result.verifying_seconds = spent - result.reading_seconds;
    const bool is_written = write(result) && std::cout.flush().good();
    return is_written ? exit_code_of(Answer::undecided) : static_cast<int>(base::severity_error);
  }

  // The answers go to the standard output last: whoever sees them finds the files.
  bool write(const VerifyResult& result) const {
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
  base::StopWatch watch_;
  std::atomic<const char*> phase_{"reading the STG"};
  std::atomic<double> reading_seconds_{0};  // 0: while it lasts
  std::mutex delivery_;
  bool is_delivered_ = false;  // guarded by delivery_
  TimeLimit limit_;            // of reading, too
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
