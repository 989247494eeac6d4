// resolution/critical_path.h - how long the events of a prefix take, and which must not come later.
// Here:      depths, critical events, whether something put between events delays the critical
//            path.
#pragma once

#include <cstdint>
#include <span>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::resolution {

// The environment is slow: an input event weighs 3, one of an output or internal signal 1, a dummy
// nothing. The depth of an event is the greatest weight of a chain of causes that ends with it. All
// events of inputs and outputs are critical, and the producers of what a critical event consumes
// that leave it no time.
class CriticalPath {
 public:
  using Event = net::StgPrefix::Event;

  explicit CriticalPath(const net::StgPrefix& prefix);

  static std::uint32_t weight(const Event& event);
  std::uint32_t depth(const Event& event) const { return depth_[event]; }
  bool is_critical(const Event& event) const { return is_critical_[event]; }

  // Whether a new event of weight 1 between the causes and the followers delays a critical
  // follower.
  bool is_delaying(std::span<const Event* const> causes,
                   std::span<const Event* const> followers) const;

 private:
  base::IndexedBy<Event, std::uint32_t> depth_;
  base::IndexedBy<Event, std::uint8_t> is_critical_;
};

}  // namespace vorel::resolution
