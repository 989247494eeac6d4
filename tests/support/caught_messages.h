// tests/support/caught_messages.h - what a test makes the program say.
#pragma once

#include <iostream>
#include <sstream>
#include <string>

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

}  // namespace vorel::support
