#include "flow/unfold_step.h"

#include <sstream>
#include <utility>
#include <vector>

#include "base/messages.h"
#include "flow/flow_words.h"
#include "flow/unfold_findings.h"
#include "formats/g_reader.h"
#include "formats/g_writer.h"
#include "net/initial_values.h"
#include "unfolder/unfolder.h"

namespace vorel::flow {
namespace {

using StgUnfolder = unfolder::Unfolder<net::Stg>;

std::string limit_text(const StgUnfolder& unfolder, const FlowLimits& limits) {
  const bool has_too_many = limits.max_events != 0 && unfolder.stats().events >= limits.max_events;
  const std::string limit = has_too_many ? counted(limits.max_events, "event")
                                         : base::format_message("%g seconds", limits.max_seconds);
  return "the prefix is not complete within " + limit;
}

// That the net is not safe becomes a finding; any other error stays one.
bool unfold_to_end(StgUnfolder& unfolder, Unfolded& result) {
  bool is_unfolded = false;
  std::vector<base::Message> messages;
  {
    base::MessageCapture capture;
    is_unfolded = unfolder.unfold();
    messages = capture.take();
  }
  const bool is_unsafe = !is_unfolded && unfolder.unsafe();
  if (is_unsafe) result.fault = unsafe_finding(unfolder);
  for (const base::Message& message : messages) {
    if (!message.is_error) base::print_warning(message.text);
    if (message.is_error && !is_unsafe) base::print_error(message.text);
  }
  return is_unfolded;
}

}  // namespace

Unfolded unfold(net::Stg stg, const StepContext& context) {
  unfolder::UnfoldOptions options;
  options.number_of_threads = context.request.threads;
  options.max_events = context.request.limits.max_events;
  options.max_seconds = context.deadline.left();
  options.keep_incomplete = true;
  StgUnfolder unfolder(std::move(stg), options,
                       [&](const std::string& line) { context.tell_progress(line); });
  Unfolded result;
  if (!unfold_to_end(unfolder, result)) return result;
  if (!unfolder.is_complete()) {
    result.limit = limit_text(unfolder, context.request.limits);
    return result;
  }
  unfolder.warn_if_no_events();
  net::StgPrefix prefix = std::move(unfolder).result();
  if (const auto inconsistency = net::settle_initial_values(prefix))
    result.fault = inconsistent_finding(prefix, *inconsistency);
  else
    result.prefix = std::move(prefix);
  return result;
}

Unfolded unfold_again(const net::Stg& stg, const StepContext& context) {
  std::ostringstream text;
  if (!formats::write_g(stg, text, formats::GInitialValues::of_toggles)) return {};
  auto read = formats::read_g_text(text.str(), context.request.stg_name);
  return read ? unfold(std::move(*read), context) : Unfolded{};
}

}  // namespace vorel::flow
