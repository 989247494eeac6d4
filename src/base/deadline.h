// base/deadline.h - how long something may still take.
#pragma once

#include <algorithm>
#include <cstdint>

#include "base/clock.h"

namespace vorel::base {

class Deadline {
 public:
  // From now, or as many seconds ago as have been spent before; 0: none.
  explicit Deadline(double seconds, double spent_before = 0)
      : seconds_{seconds}, spent_before_{spent_before} {}

  bool is_set() const { return seconds_ > 0; }
  bool is_over() const { return is_set() && spent() > seconds_; }
  // Positive even when it is over: 0 would be no bound.
  double left() const { return is_set() ? std::max(seconds_ - spent(), 1e-3) : 0; }
  double spent() const { return spent_before_ + seconds_of(ticks_now() - start_); }

 private:
  std::uint64_t start_ = ticks_now();
  double seconds_, spent_before_;
};

}  // namespace vorel::base
