// tools/time_limit.h - the end of a run whose time is over, whatever it is doing.
// Here:      a thread that waits for the time, and ends the process.
// Not here:  loops that look at the clock themselves (base/deadline.h): they end earlier, with more
//            to tell, and are given a moment for it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "base/deadline.h"

namespace vorel::tools {

class TimeLimit {
 public:
  // From now on; 0: none. An error if no thread can be started. `text` is the error that is
  // printed, behind it what the run was at.
  TimeLimit(double seconds, std::string text);
  // The run has come to its end in time.
  ~TimeLimit();
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;

  // What the run is at, as in "stopped while ...". Once time is over it does not return.
  void enter(const char* phase);
  double spent() const { return deadline_.spent(); }

 private:
  void wait();
  [[noreturn]] void end_process() const;

  const base::Deadline deadline_;
  const std::string text_;
  std::atomic<const char*> phase_{"starting"};
  std::mutex mutex_;
  std::condition_variable over_;
  bool is_over_ = false;  // guarded by mutex_
  std::thread thread_;
};

}  // namespace vorel::tools
