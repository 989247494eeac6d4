// base/text_sink.h - how the writers of text put their pieces together.
// Here:      buffered appending of texts and numbers, and the one error of a failing write.
// Not here:  files (formats/save_file.h), escapes, which each format has of its own.
// Memory is one buffer, whatever the length of the text, if there is a stream.
#pragma once

#include <charconv>
#include <concepts>
#include <ostream>
#include <string>
#include <string_view>

namespace vorel::base {

// The error "cannot write a file"; gives false, for a caller to pass on.
bool report_write_failure();

// Of the sinks that several threads append to, no two share a cache line.
class alignas(64) TextSink {
 public:
  explicit TextSink(std::ostream& stream) : stream_{&stream} { buffer_.reserve(2 * full_size); }
  // Keeps all of the text, for the caller to write.
  TextSink() : drain_size_{std::string::npos} {}
  TextSink(const TextSink&) = delete;
  TextSink& operator=(const TextSink&) = delete;

  TextSink& operator<<(std::string_view text) {
    buffer_.append(text);
    if (buffer_.size() >= drain_size_) drain();
    return *this;
  }
  TextSink& operator<<(char c) { return *this << std::string_view(&c, 1); }
  TextSink& operator<<(std::unsigned_integral auto number) {
    char digits[24];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return *this << std::string_view(digits, static_cast<std::size_t>(end - digits));
  }

  // Gives the stream all that it has not got yet.
  void drain();
  // Flushes the stream, too. False after an error, if that or any write before has failed.
  bool finish();

  // Of a sink without a stream.
  const std::string& text() const { return buffer_; }
  void clear() { buffer_.clear(); }

 private:
  static constexpr std::size_t full_size = std::size_t{1} << 16;

  std::ostream* const stream_ = nullptr;
  const std::size_t drain_size_ = full_size;
  std::string buffer_;
};

}  // namespace vorel::base
