// base/clock.h - the monotonic clock that times runs and solver calls.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

namespace vorel::base {

// One tick is a nanosecond.
inline std::uint64_t ticks_now() {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(since).count());
}

inline double seconds_of(std::uint64_t ticks) { return static_cast<double>(ticks) / 1e9; }

// Seconds from one reading to the next.
class StopWatch {
 public:
  double lap() {
    const std::uint64_t before = std::exchange(ticks_, ticks_now());
    return seconds_of(ticks_ - before);
  }

 private:
  std::uint64_t ticks_ = ticks_now();
};

// Adds the seconds that it lives.
class AddedTime {
 public:
  explicit AddedTime(double& seconds) : seconds_{seconds}, start_{ticks_now()} {}
  AddedTime(const AddedTime&) = delete;
  AddedTime& operator=(const AddedTime&) = delete;
  ~AddedTime() { seconds_ += seconds_of(ticks_now() - start_); }

 private:
  double& seconds_;
  std::uint64_t start_;
};

// Two decimals: "0.01".
std::string format_seconds(double value);

}  // namespace vorel::base
