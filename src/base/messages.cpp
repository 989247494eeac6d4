#include "base/messages.h"

#include <atomic>
#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <utility>

#include "base/last_words.h"
#include "base/run_state.h"

namespace vorel::base {
namespace {

std::atomic<std::uint32_t> severity{severity_clean};
std::atomic<MessageCapture*> capture{nullptr};
thread_local bool is_outside = false;  // of all captures

MessageCapture* collector_of_thread() { return is_outside ? nullptr : capture.load(); }

void print_labelled(std::string_view label, std::string_view text) {
  // The standard error stream is tied to the standard output: what was printed before comes first.
  std::cerr << label << text << '\n' << std::flush;
}

std::string format_arguments(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  assert(length >= 0 && "a format of this program is always valid");
  std::string text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

}  // namespace

std::uint32_t raise_severity(std::uint32_t level) {
  MessageCapture* const collector =
      level < severity_memory_overflow ? collector_of_thread() : nullptr;
  std::atomic<std::uint32_t>& raised = collector != nullptr ? collector->severity_ : severity;
  std::uint32_t seen = raised.load();
  while (seen < level && !raised.compare_exchange_weak(seen, level)) {
  }
  return seen < level ? level : seen;
}

void print_error(std::string_view text) {
  if (MessageCapture* const collector = collector_of_thread()) {
    collector->add(text, true);
    raise_severity(severity_error);
  } else {
    print_last_error(text);
  }
}

bool fail(std::string_view text) {
  print_error(text);
  return false;
}

void print_last_error(std::string_view text) {
  print_labelled("\nError: ", text);
  raise_severity(severity_error);
}

void print_warning(std::string_view text) {
  if (MessageCapture* const collector = collector_of_thread())
    collector->add(text, false);
  else
    print_labelled("\nWarning: ", text);
  raise_severity(severity_warning);
}

std::ostream& notes_stream() {
  static std::ostream nowhere(nullptr);  // drops all that it gets, and has no other state
  return collector_of_thread() != nullptr ? nowhere : std::cout;
}

MessageCapture::MessageCapture() : outer_{capture.exchange(this)} {}

MessageCapture::~MessageCapture() {
  [[maybe_unused]] const MessageCapture* const ended = capture.exchange(outer_);
  assert(ended == this && "captures end in the opposite order of their beginnings");
}

void MessageCapture::add(std::string_view text, bool is_error) {
  const std::lock_guard lock(mutex_);
  messages_.push_back({std::string(text), is_error});
}

std::vector<Message> MessageCapture::take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(messages_, {});
}

std::string MessageCapture::last_note() {
  const std::lock_guard lock(mutex_);
  return note_;
}

void leave_message_captures() { is_outside = true; }

std::string format_message(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::string text = format_arguments(format, arguments);
  va_end(arguments);
  return text;
}

void print_formatted(std::ostream& stream, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  stream << format_arguments(format, arguments) << std::flush;
  va_end(arguments);
}

void note_silent_failure(std::string_view reason) {
  if (MessageCapture* const collector = collector_of_thread()) {
    const std::lock_guard lock(collector->mutex_);
    collector->note_ = reason;
  }
  if (verbosity() >= 1) std::cerr << "\nthe input is not read: " << reason << '\n' << std::flush;
}

std::string with_hint(std::string text, std::string_view hint) {
  if (hint.empty()) return text;
  return text.append("\n(").append(hint).append(")");
}

std::string cannot_open_for_input(std::string_view name) {
  return std::string("cannot open \"").append(name).append("\" for input");
}

std::string cannot_open_for_output(std::string_view name) {
  return std::string("cannot open \"").append(name).append("\" for output");
}

}  // namespace vorel::base
