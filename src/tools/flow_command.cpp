#include "tools/flow_command.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "base/last_words.h"
#include "base/messages.h"
#include "base/program.h"
#include "base/text_sink.h"
#include "flow/flow.h"
#include "flow/flow_words.h"
#include "flow/properties.h"
#include "flow/verdict.h"
#include "formats/save_file.h"
#include "report/document.h"
#include "report/page.h"
#include "tools/flow_arguments.h"
#include "tools/flow_files.h"
#include "tools/flow_report.h"
#include "tools/input_net.h"
#include "tools/progress_line.h"
#include "tools/time_limit.h"

namespace vorel::tools {
namespace {

using flow::Step;

constexpr const char* undelivered_hint =
    "\nnot all could be written\n"
    "hint: see whether there is room, and a permission to write, where the files are to go\n";

// "3 inputs, 1 output".
std::string counts(std::initializer_list<std::pair<std::size_t, const char*>> items) {
  std::string text;
  for (const auto& [count, name] : items) {
    if (count == 0) continue;
    text +=
        (text.empty() ? "" : ", ") + std::to_string(count) + ' ' + name + (count > 1 ? "s" : "");
  }
  return text;
}

std::string sizes_text(const net::Stg& stg) {
  return counts({{stg.inputs_end, "input"},
                 {stg.outputs_end - stg.inputs_end, "output"},
                 {stg.internals_end - stg.outputs_end, "internal signal"},
                 {stg.signals.size() - stg.internals_end, "dummy signal"},
                 {stg.transitions.size(), "transition"},
                 {stg.places.size(), "place"}});
}

class FlowRun {
 public:
  explicit FlowRun(FlowTask& task)
      : task_{task},
        stream_{task.document == standard_stream ? std::cerr : std::cout},
        progress_{!task.quiet},
        limit_{task.request.limits.max_seconds, [this] { return give_up(); }} {}

  // nullopt after an error in what is delivered.
  std::optional<flow::Verdict> run() {
    if (base::run_failed()) return std::nullopt;
    auto& result = base::keep_to_the_end(flow::FlowResult{});
    flow::StepRecord reading{Step::read, {}, 0};
    std::vector<base::Message> messages;
    auto stg = read_net(messages);
    const bool is_read = stg.has_value();
    if (is_read && read_others(*stg, messages)) {
      reading.text = sizes_text(*stg);
      reading.seconds = watch_.lap();
      {
        const std::scoped_lock lock(telling_);
        sizes_ = flow::sizes_of(*stg);
      }
      tell_end(reading);
      flow::FlowRequest request = task_.request;
      request.limits.seconds_before = reading.seconds;
      result = flow::run_flow(std::move(*stg), request, listener());
    } else {
      reading.text = "failed";
      reading.seconds = watch_.lap();
      tell_end(reading);
      result.sentence =
          std::string(is_read ? "what goes with the STG" : "the STG") + " could not be read";
      result.hint = std::string("put it right as the error says") +
                    (is_read ? "" : "; vorel-unfold --help tells how an STG is written");
    }
    result.seconds += reading.seconds;
    result.steps.insert(result.steps.begin(), std::move(reading));
    add_messages(messages, result);
    const std::scoped_lock lock(telling_);
    is_delivered_ = true;
    return deliver_or_tell(result);
  }

 private:
  // nullopt after an error, which is among the messages.
  std::optional<net::Stg> read_net(std::vector<base::Message>& messages) {
    base::MessageCapture capture;
    auto stg = read_stg(task_.format_name, task_.stg);
    messages = capture.take();
    return stg;
  }

  bool read_others(const net::Stg& stg, std::vector<base::Message>& messages) {
    base::MessageCapture capture;
    const bool is_read = reset_is_new(stg) && read_properties();
    for (base::Message& message : capture.take()) messages.push_back(std::move(message));
    return is_read;
  }

  bool reset_is_new(const net::Stg& stg) const {
    const std::string& name = task_.request.module.reset_input;
    const bool is_new = std::ranges::find(stg.signals, name, [](const auto& signal) {
                          return std::string_view(signal->name);
                        }) == stg.signals.end();
    if (!is_new) base::print_error("--reset: the STG has a signal '" + name + "' itself");
    return is_new;
  }

  bool read_properties() {
    if (task_.properties.empty()) return true;
    auto properties = flow::read_properties(task_.properties);
    const std::scoped_lock lock(telling_);
    if (properties) task_.request.properties = std::move(*properties);
    return properties.has_value();
  }

  // They come before those of the flow.
  static void add_messages(const std::vector<base::Message>& messages, flow::FlowResult& result) {
    std::vector<std::string> warnings, errors;
    for (const base::Message& message : messages)
      (message.is_error ? errors : warnings).push_back(message.text);
    result.warnings.insert(result.warnings.begin(), warnings.begin(), warnings.end());
    result.errors.insert(result.errors.begin(), errors.begin(), errors.end());
    if (!warnings.empty() && result.verdict == flow::Verdict::verified) {
      result.verdict = flow::Verdict::verified_with_warnings;
      result.sentence += "; there are warnings";
    }
  }

  // What there is to tell of a run whose time is over, while its steps go on: they have found
  // nothing that could be read now. None if the run has something to tell itself.
  std::optional<int> give_up() {
    const std::scoped_lock lock(telling_);
    if (is_delivered_) return std::nullopt;
    base::leave_message_captures();
    progress_.clear();
    auto& result = base::keep_to_the_end(flow::FlowResult{});
    const std::string reason =
        base::format_message("%g seconds were over while ", task_.request.limits.max_seconds) +
        std::string(flow::row_of(at_).doing);
    flow::conclude(flow::Ending::limit, task_.request, reason, result);
    result.sizes = sizes_;
    result.steps = told_;
    result.seconds = limit_.deadline().spent();
    const auto verdict = deliver_or_tell(result);
    const bool is_told = std::cout.flush().good();
    return static_cast<int>(is_told && verdict ? static_cast<std::uint32_t>(*verdict)
                                               : base::raise_severity(base::severity_error));
  }

  flow::FlowListener listener() {
    flow::FlowListener listener;
    listener.end = [this](const flow::StepRecord& record) { tell_end(record); };
    listener.begin = [this](Step step) {
      const std::scoped_lock lock(telling_);
      at_ = step;
      progress_.show(std::string(flow::row_of(step).doing));
    };
    if (!progress_.is_active()) return listener;
    listener.progress = [this](const std::string& line) {
      const std::scoped_lock lock(telling_);
      progress_.show(std::string(flow::row_of(at_).doing) + ": " + line);
    };
    return listener;
  }

  void tell_end(const flow::StepRecord& record) {
    const std::scoped_lock lock(telling_);
    told_.push_back(record);
    print(record);
  }

  void print(const flow::StepRecord& record) {
    progress_.clear();
    if (!task_.quiet) print_step(record, stream_);
  }

  std::optional<flow::Verdict> deliver_or_tell(flow::FlowResult& result) {
    if (deliver(result)) return result.verdict;
    if (!task_.quiet) stream_ << undelivered_hint << std::flush;
    return std::nullopt;
  }

  // Of an error in the input there is nothing to be kept.
  bool keeps_folder(const flow::FlowResult& result) const {
    return !task_.folder.empty() && result.verdict != flow::Verdict::error;
  }

  // Files first, then what is told, the document on the standard output last.
  bool deliver(flow::FlowResult& result) {
    std::vector<FlowFile> files;
    if (!prepare_files(result, files)) return false;
    std::vector<std::string> names;
    for (const FlowFile& file : files) names.push_back(file.name);
    const auto write_document = [&](std::ostream& stream) {
      return report::write_document(task_.request, result, names, stream);
    };
    if (keeps_folder(result)) {
      files.push_back({"report.json", write_document});
      if (!write_folder(task_, files)) return false;
    }
    const bool is_on_output = task_.document == standard_stream;
    if (!task_.document.empty() && !is_on_output) {
      const bool is_saved = formats::save_file(
          task_.document, [&](base::OutputFile& file) { return write_document(file.stream()); });
      if (!is_saved) return false;
    }
    tell(result, files);
    return !is_on_output || write_document(std::cout);
  }

  // The page is made before the document, which tells how long that took.
  bool prepare_files(flow::FlowResult& result, std::vector<FlowFile>& files) {
    if (!keeps_folder(result)) return true;
    base::StopWatch watch;
    files = circuit_files(task_, result);
    for (FlowFile& file : waveform_files(result)) files.push_back(std::move(file));
    if (task_.wants_page) {
      std::vector<std::string> names;
      for (const FlowFile& file : files) names.push_back(file.name);
      std::ostringstream page;
      if (!report::write_page(task_.request, result, names, page)) return false;
      files.push_back({"report.html", [text = std::move(page).str()](std::ostream& stream) {
                         stream << text << std::flush;
                         return stream.good() || base::report_write_failure();
                       }});
    }
    flow::StepRecord record{Step::report, std::to_string(files.size() + 1) + " files", watch.lap()};
    print(record);
    result.seconds += record.seconds;
    result.steps.push_back(std::move(record));
    return true;
  }

  void tell(const flow::FlowResult& result, const std::vector<FlowFile>& files) {
    for (const std::string& warning : result.warnings) base::print_warning(warning);
    for (const std::string& error : result.errors) base::print_error(error);
    if (task_.quiet) return;
    print_outcome(task_, result, stream_);
    if (!files.empty()) {
      stream_ << "\nwrote " << task_.folder << ':';
      std::size_t traces = 0;
      for (const FlowFile& file : files) {
        if (file.name.starts_with("traces/"))
          ++traces;
        else
          stream_ << ' ' << file.name;
      }
      if (traces > 0) stream_ << " and " << counts({{traces, "trace"}});
      stream_ << '\n';
    }
    stream_ << std::flush;
  }

  FlowTask& task_;
  std::ostream& stream_;
  base::StopWatch watch_;

  std::mutex telling_;  // guards what follows, and the standard output
  ProgressLine progress_;
  bool is_delivered_ = false;  // or about to be
  Step at_ = Step::read;
  std::vector<flow::StepRecord> told_;
  flow::StgSizes sizes_;
  TimeLimit limit_;
};

}  // namespace

int run_flow_command(int argc, char** argv) {
  base::start_program();
  auto task = parse_flow_arguments(argc, argv);
  if (!task) return base::finish_program();
  std::optional<flow::Verdict> verdict;
  if (flow_files_can_be_written(*task)) verdict = FlowRun(*task).run();
  const bool is_told = std::cout.flush().good();
  const int severity = base::finish_program();
  assert((verdict || severity >= static_cast<int>(base::severity_error)) && "an error was told");
  if (!verdict || !is_told) return severity;
  return static_cast<int>(*verdict);
}

}  // namespace vorel::tools
