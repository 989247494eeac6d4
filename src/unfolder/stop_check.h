// unfolder/stop_check.h - whether a long search has to end before it is complete.
// The question may cost a look at the clock, and is passed on at every 256th call only. Of one
// worker.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>

namespace vorel::unfolder {

class StopCheck {
 public:
  explicit StopCheck(std::function<bool()> must_stop) : must_stop_{std::move(must_stop)} {}

  // Once true, always true.
  bool operator()() {
    if (++calls_ % 256 == 0 && !stopped_) stopped_ = must_stop_();
    return stopped_;
  }

 private:
  const std::function<bool()> must_stop_;
  std::uint32_t calls_ = 0;
  bool stopped_ = false;
};

}  // namespace vorel::unfolder
