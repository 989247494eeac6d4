#include "flow/circuit_step.h"

#include <algorithm>
#include <utility>

#include "base/messages.h"
#include "flow/flow_words.h"
#include "flow/synthesis_step.h"
#include "verify/circuit_builder.h"
#include "verify/verifier.h"

namespace vorel::flow {
namespace {

using Gates = std::span<const toolkit::LibraryGate>;
using verify::Answer;

std::vector<Style> styles_of(Style wanted) {
  if (wanted != Style::automatic) return {wanted};
  return {Style::mapped, Style::standard_c, Style::complex_gate};
}

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : "; ") + text;
  std::ranges::replace(all, '\n', ' ');
  return all;
}

// What is read is the text that the user gets. False after an error.
bool verify_circuit(CircuitResult& circuit, const net::Stg& stg, Gates gates,
                    const StepContext& context) {
  verify::CircuitOptions options;
  options.top = circuit.module_name;
  const synthesis::ModuleOptions& module = context.request.module;
  if (module.reset == synthesis::ResetKind::input)
    options.constants.push_back({module.reset_input, false});
  auto read = verify::read_circuit_text(circuit.module_text, circuit.module_name + ".v", stg, gates,
                                        options);
  if (!read) return false;
  circuit.circuit = std::move(*read);
  const verify::VerifierOptions limits{.limits = {.max_events = context.request.limits.max_events,
                                                  .max_seconds = context.deadline.left()},
                                       .formula = context.formula(),
                                       .threads = context.request.threads};
  circuit.verification = verify::verify(stg, circuit.circuit, limits);
  return circuit.verification.has_value();
}

class Search {
 public:
  Search(const net::StgPrefix& stg, Gates gates, const StepContext& context,
         const StepRunner& run_step)
      : stg_{stg}, gates_{gates}, context_{context}, run_step_{run_step} {}

  CircuitSearch run() && {
    for (const Style style : styles_of(context_.request.style)) {
      if (context_.deadline.is_over()) {
        result_.is_out_of_time = true;
        break;
      }
      Attempt attempt{.style = style, .failure = {}};
      attempt.failure = try_style(style);
      result_.attempts.push_back(attempt);
      if (attempt.failure.empty()) break;
    }
    return std::move(result_);
  }

 private:
  // What went wrong; empty: the circuit is taken.
  std::string try_style(Style style) {
    std::optional<Synthesised> made;
    std::vector<std::string> warnings;
    std::string failure = make(style, made, warnings);
    if (!made) return failure;
    failure = check(*made, warnings);
    take(std::move(*made), std::move(warnings));
    return failure;
  }

  std::string make(Style style, std::optional<Synthesised>& made,
                   std::vector<std::string>& warnings) {
    std::string failure;
    run_step_(Step::synthesise, [&] {
      base::MessageCapture messages;
      made = synthesise(stg_, style, gates_, context_);
      failure = errors_of(messages, warnings);
      const std::string title = std::string(row_of(style).title) + ": ";
      if (!made && failure.empty()) failure = "no circuit found";
      return title + (made ? size_of(made->circuit) : failure);
    });
    return failure;
  }

  std::string check(Synthesised& made, std::vector<std::string>& warnings) {
    std::string failure;
    run_step_(Step::verify, [&] {
      base::MessageCapture messages;
      CircuitResult& circuit = made.circuit;
      verify_circuit(circuit, made.mapped ? *made.mapped : stg_, gates_, context_);
      failure = errors_of(messages, warnings);
      if (!circuit.verification) return failure;
      failure = shortfall_of(*circuit.verification);
      return failure.empty() ? "the circuit is correct; " + size_of(*circuit.verification)
                             : failure;
    });
    return failure;
  }

  static std::string size_of(const CircuitResult& circuit) {
    std::uint64_t literals = 0;
    for (const Equation& equation : circuit.equations) literals += equation.literals;
    std::string text =
        counted(circuit.instances.size(), "gate") + ", " + counted(literals, "literal");
    if (circuit.style == Style::mapped) text += base::format_message(", area %.2f", circuit.area);
    if (!circuit.inserted.empty()) text += ", inserted " + joined(circuit.inserted);
    return text;
  }

  static std::string size_of(const verify::Verification& verification) {
    return counted(verification.events, "event") + " of circuit and environment";
  }

  // Empty for a correct circuit.
  static std::string shortfall_of(const verify::Verification& verification) {
    if (verification.verdict() == Answer::holds) return {};
    if (verification.verdict() == Answer::undecided) return "verification is undecided";
    std::vector<std::string> faults;
    for (const verify::Finding& finding : verification.findings) faults.push_back(finding.message);
    return "not correct: " + joined(faults);
  }

  static std::string errors_of(base::MessageCapture& messages, std::vector<std::string>& warnings) {
    std::vector<std::string> errors;
    for (base::Message& message : messages.take())
      (message.is_error ? errors : warnings).push_back(std::move(message.text));
    return joined(errors);
  }

  static int rank(const CircuitResult& circuit) {
    if (!circuit.verification) return 0;
    const Answer verdict = circuit.verification->verdict();
    if (verdict == Answer::holds) return 2;
    return verdict == Answer::undecided ? 1 : 0;
  }

  void take(Synthesised made, std::vector<std::string> warnings) {
    if (result_.circuit && rank(*result_.circuit) > rank(made.circuit)) return;
    result_.circuit = std::move(made.circuit);
    result_.mapped = std::move(made.mapped);
    result_.warnings = std::move(warnings);
  }

  const net::StgPrefix& stg_;
  const Gates gates_;
  const StepContext& context_;
  const StepRunner& run_step_;
  CircuitSearch result_;
};

}  // namespace

CircuitSearch find_circuit(const net::StgPrefix& stg, Gates gates, const StepContext& context,
                           const StepRunner& run_step) {
  return Search(stg, gates, context, run_step).run();
}

}  // namespace vorel::flow
