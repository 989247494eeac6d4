// tools/progress_line.h - a line on the terminal that is rewritten in place.
#pragma once

#include <cstdint>
#include <string>

namespace vorel::tools {

class ProgressLine {
 public:
  // Shows nothing unless wanted, and the standard error stream is a terminal.
  explicit ProgressLine(bool wanted);

  bool is_active() const { return active_; }
  // At most ten times a second; what comes in between is not shown.
  void show(const std::string& line);
  // Leaves the line as it was before.
  void clear();

 private:
  const bool active_;
  std::uint64_t shown_at_ = 0;  // ticks; 0: nothing is shown
};

}  // namespace vorel::tools
