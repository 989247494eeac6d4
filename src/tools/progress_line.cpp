#include "tools/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "base/clock.h"

namespace vorel::tools {
namespace {

constexpr double seconds_between = 0.1;
constexpr const char* start_of_empty_line = "\r\033[K";

// A longer line would wrap, and could not be rewritten.
std::size_t longest_line() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col < 2) return 79;
  return size.ws_col - std::size_t{1};
}

}  // namespace

ProgressLine::ProgressLine(bool wanted) : active_{wanted && ::isatty(STDERR_FILENO) == 1} {}

void ProgressLine::show(const std::string& line) {
  if (!active_) return;
  const std::uint64_t now = base::ticks_now();
  if (shown_at_ != 0 && base::seconds_of(now - shown_at_) < seconds_between) return;
  shown_at_ = now;
  std::cerr << start_of_empty_line << line.substr(0, longest_line()) << std::flush;
}

void ProgressLine::clear() {
  if (shown_at_ != 0) std::cerr << start_of_empty_line << std::flush;
  shown_at_ = 0;
}

}  // namespace vorel::tools
