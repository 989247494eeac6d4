#include "flow/flow.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "base/messages.h"
#include "decomposition/gate_library.h"
#include "flow/circuit_step.h"
#include "flow/coding_step.h"
#include "flow/flow_words.h"
#include "flow/irreducible.h"
#include "flow/properties.h"
#include "flow/resolution_step.h"
#include "flow/step_context.h"
#include "flow/stg_checks.h"
#include "flow/unfold_step.h"
#include "flow/verdict.h"
#include "formats/g_names.h"
#include "resolution/coefficients.h"
#include "toolkit/verilog_name.h"

namespace vorel::flow {
namespace {

std::size_t cut_offs(const net::StgPrefix& prefix) {
  return static_cast<std::size_t>(
      std::ranges::count_if(prefix.events, [](const auto& event) { return event->is_cut_off(); }));
}

std::string size_text(const net::StgPrefix& prefix) {
  return counted(prefix.events.size(), "event") + ", " +
         counted(prefix.conditions.size(), "condition") + ", " +
         counted(cut_offs(prefix), "cut-off");
}

bool has_faults(const FlowResult& result) {
  return std::ranges::find(result.findings, Gravity::fault, &StgFinding::gravity) !=
         result.findings.end();
}

class FlowRun {
 public:
  FlowRun(const FlowRequest& request, const FlowListener& listener) : context_{request, listener} {}

  FlowResult run(net::Stg stg) {
    base::StopWatch watch;
    result_.sizes = sizes_of(stg);
    const Ending ending = take_steps(std::move(stg));
    std::ranges::stable_sort(result_.findings, std::greater<>(), &StgFinding::gravity);
    conclude(ending, context_.request, reason_, result_);
    result_.seconds = watch.lap();
    return std::move(result_);
  }

 private:
  Ending take_steps(net::Stg stg) {
    if (!check_input(stg) || !check_names(stg) || !check_coefficients(stg) || !read_gates())
      return Ending::error;
    if (const auto ending = unfold_given(std::move(stg))) return *ending;
    look_at_stg();
    if (!result_.errors.empty()) return Ending::error;
    if (has_faults(result_)) return Ending::faulty_stg;
    if (is_out_of_time("the checks of the STG")) return Ending::limit;
    if (!result_.coding->csc_holds)
      if (const auto ending = resolve_conflicts()) return *ending;
    if (is_out_of_time("the resolution of conflicts")) return Ending::limit;
    return make_circuit();
  }

  bool check_input(const net::Stg& stg) {
    if (stg.inputs_end != stg.internals_end) return true;
    result_.errors.push_back("the STG \"" + context_.request.stg_name +
                             "\" has no output or internal signal, so there is nothing to make a "
                             "circuit of");
    return false;
  }

  // What would end the run later, after much work, or only with some of the options.
  bool check_names(const net::Stg& stg) {
    base::MessageCapture messages;
    for (const auto& signal : stg.signals)
      if (!signal->is_dummy() && !toolkit::can_stand_in_verilog(signal->name))
        toolkit::report_not_for_verilog("the signal", signal->name);
    if (!messages.has_failed()) formats::choose_g_names(stg);
    keep_errors(messages);
    return result_.errors.empty();
  }

  // They are needed for resolution only, but wrong ones are never passed over.
  bool check_coefficients(const net::Stg& stg) {
    if (!context_.request.resolution.is_wanted) return true;
    base::MessageCapture messages;
    base::Params unused = context_.params;
    resolution::evaluate_coefficients(context_.request.resolution.coefficients, stg, unused);
    std::string errors;
    for (const base::Message& message : messages.take())
      errors += (errors.empty() ? "--cost: " : "; ") + message.text;
    if (!errors.empty()) result_.errors.push_back(std::move(errors));
    return result_.errors.empty();
  }

  bool read_gates() {
    base::MessageCapture messages;
    auto gates = decomposition::read_gates(context_.request.library);
    keep(messages);
    if (gates)
      gates_ = std::move(*gates);
    else
      result_.errors.back() = base::with_hint(result_.errors.back(), messages.last_note());
    return gates.has_value();
  }

  std::optional<Ending> unfold_given(net::Stg stg) {
    Unfolded unfolded;
    run_step(Step::unfold, [&]() -> std::string {
      unfolded = unfold(std::move(stg), context_);
      if (unfolded.fault) return unfolded.fault->message;
      if (!unfolded.limit.empty()) return unfolded.limit;
      return unfolded.prefix ? size_text(*unfolded.prefix) : "failed";
    });
    if (unfolded.fault) {
      result_.findings.push_back(std::move(*unfolded.fault));
      return Ending::faulty_stg;
    }
    return settle(unfolded.prefix, unfolded.limit, result_.given);
  }

  // How the run ends if there is no prefix, after a limit or an error.
  std::optional<Ending> settle(std::optional<net::StgPrefix>& prefix, const std::string& limit,
                               std::optional<net::StgPrefix>& place) {
    if (prefix) {
      place = std::move(prefix);
      return std::nullopt;
    }
    reason_ = limit;
    return limit.empty() ? Ending::error : Ending::limit;
  }

  void look_at_stg() {
    const net::StgPrefix& prefix = *result_.given;
    result_.sizes.conditions = prefix.conditions.size();
    result_.sizes.events = prefix.events.size();
    result_.sizes.cut_offs = cut_offs(prefix);
    run_step(Step::check, [&] { return check_given(); });
    drop_told_warnings();
    if (!context_.request.properties.empty() && result_.errors.empty())
      run_step(Step::properties, [&] { return answer_properties(); });
    if (result_.errors.empty()) run_step(Step::coding, [&] { return look_at_coding(); });
  }

  std::string check_given() {
    std::vector<StgFinding> found = check_stg(*result_.given, context_.formula());
    std::size_t faults = 0, warnings = 0;
    for (const StgFinding& finding : found) {
      faults += finding.gravity == Gravity::fault ? 1u : 0u;
      warnings += finding.gravity == Gravity::warning ? 1u : 0u;
    }
    std::ranges::move(found, std::back_inserter(result_.findings));
    if (faults == 0 && warnings == 0) return "safe, consistent, nothing wrong";
    return "safe, consistent; " + counted(faults, "fault") + ", " + counted(warnings, "warning");
  }

  // Of dead signals the findings tell.
  void drop_told_warnings() {
    for (const StgFinding& finding : result_.findings)
      if (finding.kind == FindingKind::dead_signal)
        std::erase(result_.warnings, "signal " + finding.subjects.front() + " is dead");
  }

  // A property that makes no sense is an error of the input.
  std::string answer_properties() {
    std::size_t witnesses = 0;
    for (const NamedProperty& property : context_.request.properties) {
      PropertyResult answered = check_property(*result_.given, property, context_.formula());
      if (answered.answer == PropertyAnswer::undecided)
        result_.errors.push_back("property " + property.name + ": " + answered.message);
      witnesses += answered.answer == PropertyAnswer::witness ? 1u : 0u;
      result_.properties.push_back(std::move(answered));
    }
    return counted(result_.properties.size(), "answer") + ", " + std::to_string(witnesses) +
           " with a witness";
  }

  std::string look_at_coding() {
    result_.coding = find_coding(*result_.given, context_.formula());
    if (!result_.coding) return "failed";
    const Coding& coding = *result_.coding;
    if (coding.usc_holds) return "all states have codes of their own";
    if (coding.csc_holds) return "no CSC conflict; some states share a code";
    if (!context_.request.resolution.with_reductions) find_irreducible_conflicts();
    return counted(coding.csc_cores, "CSC conflict core");
  }

  // How the run ends, unless it goes on.
  std::optional<Ending> resolve_conflicts() {
    if (!context_.request.resolution.is_wanted) return Ending::conflicts_unwanted;
    Resolved resolved;
    run_step(Step::resolve, [&] {
      resolved = resolve(*result_.given, context_);
      if (resolved.prefix)
        result_.resolved_core_map = find_core_map(*resolved.prefix, context_.formula());
      return base::run_failed() ? std::string("failed") : resolution_text(resolved);
    });
    if (!result_.errors.empty()) return Ending::error;
    result_.resolution = std::move(resolved.resolution);
    if (const auto ending = settle(resolved.prefix, resolved.limit, result_.resolved))
      return *ending;
    if (result_.resolution->is_complete) return std::nullopt;
    if (context_.request.resolution.with_reductions) find_irreducible_conflicts();
    return has_faults(result_) ? Ending::faulty_stg : Ending::conflicts_left;
  }

  // With reductions, only after these have not helped.
  void find_irreducible_conflicts() {
    std::ranges::move(irreducible_conflicts(*result_.given, *result_.coding),
                      std::back_inserter(result_.findings));
  }

  static std::string resolution_text(const Resolved& resolved) {
    if (!resolved.limit.empty()) return resolved.limit;
    std::string text;
    for (const AppliedTransformation& applied : resolved.resolution.transformations) {
      if (!text.empty()) text += ", ";
      text += applied.is_insertion ? "inserted " + applied.signal
                                   : "reduced concurrency by " + applied.parts.front();
    }
    if (resolved.resolution.is_complete) return text;
    return text + (text.empty() ? "" : "; ") +
           counted(resolved.resolution.cores_left, "conflict core") + " left";
  }

  // The STG itself has no such signal, but one may have been inserted.
  bool check_reset(const net::Stg& stg) {
    const synthesis::ModuleOptions& module = context_.request.module;
    const bool is_free = module.reset != synthesis::ResetKind::input ||
                         std::ranges::find(stg.signals, module.reset_input, [](const auto& signal) {
                           return std::string_view(signal->name);
                         }) == stg.signals.end();
    if (!is_free)
      result_.errors.push_back("--reset: '" + module.reset_input +
                               "' is the name of an inserted signal, so another one is needed");
    return is_free;
  }

  Ending make_circuit() {
    if (!check_reset(*result_.circuit_stg())) return Ending::error;
    const StepRunner runner = [this](Step step, const auto& work) { run_step(step, work); };
    CircuitSearch search = find_circuit(*result_.circuit_stg(), gates_, context_, runner);
    result_.attempts = std::move(search.attempts);
    result_.circuit = std::move(search.circuit);
    result_.mapped = std::move(search.mapped);
    for (std::string& warning : search.warnings) add_warning(std::move(warning));
    return search.is_out_of_time && !result_.circuit ? out_of_time("the search for a circuit")
                                                     : Ending::circuit;
  }

  bool is_out_of_time(const std::string& step) {
    if (!context_.deadline.is_over()) return false;
    out_of_time(step);
    return true;
  }

  Ending out_of_time(const std::string& step) {
    reason_ =
        base::format_message("%g seconds were over after ", context_.request.limits.max_seconds) +
        step;
    return Ending::limit;
  }

  template <class Work>
  void run_step(Step step, const Work& work) {
    const FlowListener& listener = context_.listener;
    if (listener.begin) listener.begin(step);
    base::StopWatch watch;
    base::MessageCapture messages;
    StepRecord record{.step = step, .text = work(), .seconds = 0};
    record.seconds = watch.lap();
    keep(messages);
    if (listener.end) listener.end(record);
    result_.steps.push_back(std::move(record));
  }

  void keep(base::MessageCapture& messages) {
    for (base::Message& message : messages.take()) {
      if (message.is_error)
        result_.errors.push_back(std::move(message.text));
      else
        add_warning(std::move(message.text));
    }
  }

  void keep_errors(base::MessageCapture& messages) {
    for (base::Message& message : messages.take())
      if (message.is_error) result_.errors.push_back(std::move(message.text));
  }

  // Each once: several steps may notice the same.
  void add_warning(std::string text) {
    if (std::ranges::find(result_.warnings, text) == result_.warnings.end())
      result_.warnings.push_back(std::move(text));
  }

  const StepContext context_;
  std::vector<toolkit::LibraryGate> gates_;
  std::string reason_;  // what was beyond a limit
  FlowResult result_;
};

}  // namespace

FlowResult run_flow(net::Stg stg, const FlowRequest& request, const FlowListener& listener) {
  return FlowRun(request, listener).run(std::move(stg));
}

}  // namespace vorel::flow
