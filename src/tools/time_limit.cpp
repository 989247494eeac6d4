#include "tools/time_limit.h"

#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "base/messages.h"

namespace vorel::tools {
namespace {

constexpr double grace_seconds = 0.3;
// Beyond, clocks would overflow; nobody waits that long.
constexpr double longest_wait = 1e8;

}  // namespace

TimeLimit::TimeLimit(double seconds, GiveUp give_up)
    : deadline_{seconds}, give_up_{std::move(give_up)} {
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

void TimeLimit::wait() {
  {
    std::unique_lock lock(mutex_);
    const std::chrono::duration<double> time(deadline_.left() + grace_seconds);
    if (over_.wait_for(lock, time, [this] { return is_over_; })) return;
  }
  if (const auto exit_code = give_up_()) std::_Exit(*exit_code);
}

}  // namespace vorel::tools
