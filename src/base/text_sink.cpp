#include "base/text_sink.h"

#include "base/messages.h"

namespace vorel::base {

bool report_write_failure() {
  print_error("cannot write a file");
  return false;
}

void TextSink::drain() {
  stream_->write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

bool TextSink::finish() {
  drain();
  return stream_->flush().good() || report_write_failure();
}

}  // namespace vorel::base
