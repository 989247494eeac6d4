#include "base/input_text.h"

#include <zlib.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>

#include "base/messages.h"

namespace vorel::base {
namespace {

constexpr std::size_t smallest_buffer = std::size_t{1} << 14;
constexpr std::size_t largest_first_buffer = std::size_t{1} << 28;  // whatever size is promised
constexpr std::size_t largest_read = std::size_t{1} << 30;          // zlib counts in int

// `read_some(buffer, size)` gives the number of bytes read, fewer than asked for only at the end.
template <class ReadSome>
std::string read_to_end(std::uintmax_t expected_size, ReadSome read_some) {
  // One byte more than expected, so that the first read already sees the end.
  std::string text(static_cast<std::size_t>(std::clamp<std::uintmax_t>(
                       expected_size, smallest_buffer, largest_first_buffer)) +
                       1,
                   '\0');
  std::size_t filled = 0;
  for (;;) {
    if (filled == text.size()) text.resize(2 * text.size());
    const std::size_t wanted = std::min(text.size() - filled, largest_read);
    const std::size_t got = read_some(text.data() + filled, wanted);
    assert(got <= wanted && "no more than there is room for");
    filled += got;
    if (got < wanted) break;
  }
  text.resize(filled);
  if (text.capacity() - filled > filled / 8) text.shrink_to_fit();  // a copy, if it pays
  return text;
}

std::string read_stream(std::istream& stream, std::uintmax_t expected_size) {
  return read_to_end(expected_size, [&stream](char* buffer, std::size_t size) {
    stream.read(buffer, static_cast<std::streamsize>(size));
    return static_cast<std::size_t>(stream.gcount());
  });
}

bool reading_failed(const std::string& file_name, std::string_view reason) {
  print_error(std::string("cannot read \"").append(file_name).append("\": ").append(reason));
  return false;
}

bool opening_failed(const std::string& file_name, std::string_view hint) {
  print_error(with_hint(cannot_open_for_input(file_name), hint));
  return false;
}

bool read_plain_file(const std::string& file_name, std::string& text, std::string_view hint) {
  std::ifstream file(file_name, std::ios::binary);
  if (!file.is_open()) return opening_failed(file_name, hint);
  std::error_code no_size;
  const std::uintmax_t size = std::filesystem::file_size(file_name, no_size);
  text = read_stream(file, no_size ? 0 : size);
  return !file.bad() || reading_failed(file_name, std::strerror(errno));
}

// The reason why reading ended before the end of the data; empty if it did not.
std::string decompression_error(gzFile file, const std::string& file_name) {
  int code = Z_OK;
  std::string_view reason = gzerror(file, &code);
  if (code == Z_OK || code == Z_STREAM_END) return {};
  if (code == Z_ERRNO) return std::strerror(errno);
  if (reason.starts_with(file_name + ": ")) reason.remove_prefix(file_name.size() + 2);
  return std::string(reason.empty() ? "damaged data" : reason);
}

// Straight from zlib: a stream on top of it takes damaged data for the end of the file.
bool read_compressed_file(const std::string& file_name, std::string& text, std::string_view hint) {
  const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(gzopen(file_name.c_str(), "rb"), gzclose);
  if (file == nullptr) return opening_failed(file_name, hint);
  gzbuffer(file.get(), 1u << 17);
  text = read_to_end(0, [&file](char* buffer, std::size_t size) {
    return static_cast<std::size_t>(
        std::max(0, gzread(file.get(), buffer, static_cast<unsigned>(size))));
  });
  const std::string error = decompression_error(file.get(), file_name);
  return error.empty() || reading_failed(file_name, error);
}

}  // namespace

std::string read_whole_stream(std::istream& stream) { return read_stream(stream, 0); }

bool read_whole_file(const std::string& file_name, std::string& text, std::string_view hint) {
  std::error_code unknown;  // what cannot be examined cannot be opened either
  if (std::filesystem::is_directory(file_name, unknown)) return opening_failed(file_name, hint);
  return file_name.ends_with(".gz") ? read_compressed_file(file_name, text, hint)
                                    : read_plain_file(file_name, text, hint);
}

}  // namespace vorel::base
