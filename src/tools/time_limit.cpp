#include "tools/time_limit.h"

#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "base/messages.h"
#include "base/output_file.h"

namespace vorel::tools {
namespace {

constexpr double grace_seconds = 0.3;
// Beyond, clocks would overflow; nobody waits that long.
constexpr double longest_wait = 1e8;

}  // namespace

TimeLimit::TimeLimit(double seconds, std::string text)
    : deadline_{seconds}, text_{std::move(text)} {
  if (!deadline_.is_set() || seconds > longest_wait) return;
  try {
    thread_ = std::thread([this] { wait(); });
  } catch (const std::system_error&) {
    base::print_error("cannot start a thread that watches the time");
  }
}

TimeLimit::~TimeLimit() {
  {
    const std::scoped_lock lock(mutex_);
    is_over_ = true;
  }
  over_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void TimeLimit::enter(const char* phase) {
  if (deadline_.is_over() && !base::run_failed()) end_process();
  phase_ = phase;
}

void TimeLimit::wait() {
  std::unique_lock lock(mutex_);
  const std::chrono::duration<double> time(deadline_.left() + grace_seconds);
  if (!over_.wait_for(lock, time, [this] { return is_over_; })) end_process();
}

// Whoever has told its failure only takes too long to clear up.
void TimeLimit::end_process() const {
  base::abandon_output_files();
  if (!base::run_failed()) {
    base::print_last_error(text_ + "; stopped while " + phase_.load());
  }
  std::_Exit(static_cast<int>(base::raise_severity(base::severity_error)));
}

}  // namespace vorel::tools
