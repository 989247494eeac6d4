// unfolder/past_difference.h - what two sets of events do not have in common in their pasts.
// Here:      one walk that visits the difference of two causal pasts, and little more.
// Not here:  what is made of it (unfolder/configuration_order.h).
//
// Both pasts are walked backwards side by side, highest id first, and an event that both have is
// followed only as long as some event of one past alone may still be an ancestor of the other: the
// cost is about the size of what differs. Scratch of one worker.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <span>
#include <vector>

#include "unfolder/branching_process.h"

namespace vorel::unfolder {

enum class Side : std::uint8_t { first = 1, second = 2 };

class PastDifference {
 public:
  explicit PastDifference(const BranchingProcess& process) : process_{process} {}

  // The pasts are the events themselves with their causes. Calls visit(event id, side) for each
  // event of one past alone.
  template <class Visit>
  void walk(std::span<const EventId> first, std::span<const EventId> second, Visit visit) {
    start();
    for (const EventId e : first) reach(e, one);
    for (const EventId e : second) reach(e, two);
    while (alone_ > 0) {
      std::ranges::pop_heap(heap_);
      const EventId e = heap_.back();
      heap_.pop_back();
      const std::uint8_t sides = colour_[e].sides;
      if (sides != both) {
        --alone_;
        visit(e, static_cast<Side>(sides));
      }
      for (const EventId cause : process_.origin(e).causes()) {
        assert(cause < e && "causes have lower ids: all effects of an event come before it");
        reach(cause, sides);
      }
    }
  }

 private:
  static constexpr std::uint8_t one = 1, two = 2, both = 3;
  struct Colour {
    std::uint32_t round = 0;
    std::uint8_t sides = 0;
  };

  void start() {
    ++round_;
    alone_ = 0;
    heap_.clear();
    if (colour_.size() < process_.event_count()) colour_.resize(process_.event_count() * 2);
  }

  void reach(EventId e, std::uint8_t sides) {
    assert(e < colour_.size());
    Colour& colour = colour_[e];
    if (colour.round != round_) {
      colour = {round_, sides};
      process_.fetch_origin(e);  // for when it is visited
      heap_.push_back(e);
      std::ranges::push_heap(heap_);
      if (sides != both) ++alone_;
    } else if (colour.sides != both && (colour.sides | sides) == both) {
      colour.sides = both;
      --alone_;
    }
  }

  const BranchingProcess& process_;
  std::vector<Colour> colour_;  // by event id
  std::vector<EventId> heap_;   // reached and not yet visited
  std::uint32_t round_ = 0;
  std::uint32_t alone_ = 0;  // members of the heap that one past alone has
};

}  // namespace vorel::unfolder
