// tests/support/caught_messages.h - what a test makes the program say.
#pragma once

#include <iostream>
#include <sstream>
#include <string>

#include "base/messages.h"

namespace vorel::support {

// Catches what is written to a standard stream, usually that of messages, while it lives. Errors of
// the stream end with it.
class CaughtMessages {
 public:
  explicit CaughtMessages(std::ostream& stream = std::cerr)
      : stream_{stream}, before_{stream.rdbuf(text_.rdbuf())} {}
  ~CaughtMessages() { stream_.rdbuf(before_); }
  CaughtMessages(const CaughtMessages&) = delete;
  CaughtMessages& operator=(const CaughtMessages&) = delete;

  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::ostream& stream_;
  std::streambuf* before_;
};

// What has been collected since the last call, as it would have been printed. A test that asks for
// errors collects them: printed ones fail the rest of its program.
inline std::string text_of(base::MessageCapture& capture) {
  std::string text;
  for (const base::Message& message : capture.take())
    text += (message.is_error ? "\nError: " : "\nWarning: ") + message.text + '\n';
  return text;
}

}  // namespace vorel::support
