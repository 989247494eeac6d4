// resolution/event_copies.h - the order of the events of a prefix, as it is or would be after a
// reduction.
// Here:      copies of events, each with what it directly waits for.
// Not here:  what is read off the order (resolution/signal_locks.h), making the reduction.
//
// A reduction U -n-> t makes the k-th event of t in a run wait for the event of U that gives it its
// token: the (k - n)-th one in the run, and none for k <= n. Runs that differ in that event differ
// in all that follows, so that an event of the prefix can have several copies then: one for each
// way to choose such events of U for those of t in its past, such that a run has them all. An event
// is left out if no event of the prefix gives the token that it or its past needs.
//
// Two copies are in conflict if their pasts have two copies that consume the same condition of the
// prefix, be they copies of one event. Cut-offs count as ordinary events, as givers of tokens, too.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "net/process.h"
#include "resolution/transformation.h"

namespace vorel::resolution {

class EventCopies {
 public:
  using Event = net::StgPrefix::Event;

  std::uint32_t size() const { return static_cast<std::uint32_t>(events_.size()); }
  const Event& event(std::uint32_t copy) const { return *events_[copy]; }
  // Copies that stand before this one; its past is what they lead back to.
  std::span<const std::uint32_t> causes(std::uint32_t copy) const {
    return std::span(causes_).subspan(ends_[copy], ends_[copy + 1] - ends_[copy]);
  }

  std::uint32_t add(const Event& event, std::span<const std::uint32_t> causes) {
    events_.push_back(&event);
    causes_.insert(causes_.end(), causes.begin(), causes.end());
    ends_.push_back(static_cast<std::uint32_t>(causes_.size()));
    return size() - 1;
  }

 private:
  std::vector<const Event*> events_;
  std::vector<std::uint32_t> causes_;
  std::vector<std::uint32_t> ends_{0};  // where the causes of each copy begin, and the last end
};

// One copy of each event. The prefix must outlive the copies.
EventCopies event_copies(const net::StgPrefix& prefix);

// The new place must be safe: then the copies of an event are at most as many as the events of U.
EventCopies event_copies(const net::StgPrefix& prefix, const Reduction& reduction);

}  // namespace vorel::resolution
