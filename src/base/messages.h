// base/messages.h - errors, warnings and diagnostics, and the severity they raise.
// Here:      the one way to tell the user that something is wrong, and printf-style formatting.
// Not here:  results and statistics, which go to the standard output.
//
// A failure travels as a returned null or false plus the severity: it is reported once, where it is
// noticed, and a caller that sees the failure says nothing more. Who runs engines to work on with
// what they find collects both in a MessageCapture.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace vorel::base {

inline constexpr std::uint32_t severity_clean = 0;
inline constexpr std::uint32_t severity_warning = 1;
inline constexpr std::uint32_t severity_error = 2;
inline constexpr std::uint32_t severity_memory_overflow = 5;

// Raises the severity of the run to `level` if that is higher; returns the value then in force.
// raise_severity(0) reads it. The final value is the exit code. Safe to call from any thread.
std::uint32_t raise_severity(std::uint32_t level);

// True once an error has been reported: each step of a loop that can fail is followed by this test.
inline bool run_failed() { return raise_severity(0) >= severity_error; }

// "\nError: TEXT\n" and "\nWarning: TEXT\n" on the standard error stream, flushed; raise the
// severity to 2 and to 1. Neither allocates, so that a memory overflow can still be reported.
void print_error(std::string_view text);
void print_warning(std::string_view text);
// print_error, and false: for functions that end with their failure.
bool fail(std::string_view text);

// As print_error, but never collected: for what ends the process.
void print_last_error(std::string_view text);

// Where engines tell what they do on their way to a result: the standard output, or nowhere while
// messages are collected.
std::ostream& notes_stream();

// printf-style formatting into a text of any length.
[[gnu::format(printf, 1, 2)]] std::string format_message(const char* format, ...);

// Formats, writes to the stream and flushes it.
[[gnu::format(printf, 2, 3)]] void print_formatted(std::ostream& stream, const char* format, ...);

// What passes an input over without a message leaves a note for those who ask for diagnostics.
void note_silent_failure(std::string_view reason);

// A message with advice on a line of its own, which leaves the message as it is.
std::string with_hint(std::string text, std::string_view hint);

// `cannot open "NAME" for input`: the text for every file that cannot be read.
std::string cannot_open_for_input(std::string_view name);
// `cannot open "NAME" for output`.
std::string cannot_open_for_output(std::string_view name);

struct Message {
  std::string text;  // without its label
  bool is_error = false;
};

// While it lives, errors and warnings of all threads are collected instead of printed, and the
// severity is its own, beginning with none; then that of before is in force again. The last one
// made is the one that collects. Made and destroyed like a stack, by threads that wait for each
// other. A memory overflow ends the process all the same.
class MessageCapture {
 public:
  MessageCapture();
  ~MessageCapture();
  MessageCapture(const MessageCapture&) = delete;
  MessageCapture& operator=(const MessageCapture&) = delete;

  bool has_failed() const { return severity_.load() >= severity_error; }
  // Those collected since the last call, in their order.
  std::vector<Message> take();
  // The last reason that note_silent_failure() has given, which is no message.
  std::string last_note();

 private:
  friend std::uint32_t raise_severity(std::uint32_t level);
  friend void print_error(std::string_view text);
  friend void print_warning(std::string_view text);
  friend void note_silent_failure(std::string_view reason);
  void add(std::string_view text, bool is_error);

  MessageCapture* const outer_;
  std::atomic<std::uint32_t> severity_{severity_clean};
  std::mutex mutex_;
  std::vector<Message> messages_;  // guarded by mutex_
  std::string note_;               // guarded by mutex_
};

}  // namespace vorel::base
