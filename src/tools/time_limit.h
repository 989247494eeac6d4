// tools/time_limit.h - the end of a run whose time is over, whatever it is doing.
// Here:      a thread that waits for the time, and ends the process.
// Not here:  loops that look at the clock themselves (base/deadline.h): they end earlier, with more
//            to tell, and are given a moment for it; what is told of a run that is ended.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "base/deadline.h"

namespace vorel::tools {

class TimeLimit {
 public:
  // Tells that the time is over, from the thread that waits, while the others go on. Gives the exit
  // code, or none if the run ends by itself at once.
  using GiveUp = std::function<std::optional<int>()>;

  // From now on; 0: none. An error if no thread can be started. What is used to give up has been
  // made before, and is destroyed later.
  TimeLimit(double seconds, GiveUp give_up);
  // The run has come to its end in time.
  ~TimeLimit();
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;

  const base::Deadline& deadline() const { return deadline_; }

 private:
  void wait();

  const base::Deadline deadline_;
  const GiveUp give_up_;
  std::mutex mutex_;
  std::condition_variable over_;
  bool is_over_ = false;  // guarded by mutex_
  std::thread thread_;
};

}  // namespace vorel::tools
