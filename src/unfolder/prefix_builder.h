// unfolder/prefix_builder.h - the finished Prefix of an unfolding, made by all workers.
// Here:      conditions and events as objects that are linked, in a few blocks.
// Not here:  what is in the prefix, in what order (unfolder/unfolding_loop.h).
//
// All elements of a kind, and all their lists, lie in one block each, so that it is known where an
// element will be before it is made: each is made at once, with all its links, by any worker.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "base/worker_pool.h"
#include "net/process.h"
#include "unfolder/unfolding_loop.h"

namespace vorel::unfolder {

template <class N>
class PrefixBuilder {
 public:
  // The net is moved into the prefix.
  PrefixBuilder(N&& net, UnfoldingLoop& loop);

  // Runs once.
  net::PrefixOf<N> build();

 private:
  using Condition = net::ConditionOf<N>;
  using Event = net::EventOf<N>;

  // Conditions fall into parts, of which each is made by one worker, with their consumers.
  static constexpr std::uint32_t part_count = 32;
  // Of a range of events: where their links begin, and what they consume, by parts of the
  // conditions.
  struct Links {
    struct Consumer {
      ConditionId condition;
      std::uint32_t event;  // its number in the prefix
    };
    std::vector<Consumer> consumers;
    std::array<std::uint32_t, part_count> part_ends{};  // in `consumers`
    std::size_t count = 0;                              // of conditions linked to the events
    Condition** lists = nullptr;                        // room for so many
  };

  // The conditions first .. end - 1.
  struct Part {
    ConditionId first, end;
  };
  Part part(std::uint32_t number) const;
  const UnfoldedEvent& unfolded(std::uint32_t number) const {
    return process_.event(entered_[number]);
  }

  void list_links(std::uint32_t first, std::uint32_t end, Links& links);
  void take_blocks();
  void make_conditions(std::uint32_t part_number);
  void make_condition(ConditionId c, std::span<Event*> consumers);
  void make_events(std::uint32_t first, std::uint32_t end, const Links& links);
  void set_cut_off(Event& event, EventId id) const;

  UnfoldingLoop& loop_;
  const BranchingProcess& process_;
  const std::vector<EventId>& entered_;
  net::PrefixOf<N> prefix_;
  std::vector<std::uint32_t> numbers_;  // in the prefix, by event id
  std::vector<Links> links_;            // by range of events
  // In blocks of the prefix, not made yet.
  Condition* conditions_ = nullptr;
  Event* events_ = nullptr;
  std::array<Event**, part_count> consumers_{};  // room for those of each part
};

}  // namespace vorel::unfolder
