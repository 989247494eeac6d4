// unfolder/final_states.h - the final states of the local configurations found so far.
// Here:      a table from states to the events that are the smallest to reach them; cut-offs fall
//            out of insertion.
// Not here:  comparing configurations (unfolder/configuration_order.h).
//
// With a total order a state has one event; with a partial one, or where dummies are spared, those
// that no other cuts off. Which events are cut off does not depend on the order of insertion;
// resolve() makes their correspondents independent of it too.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "unfolder/configuration_order.h"

namespace vorel::unfolder {

class FinalStateTable {
 public:
  // The initial state belongs to the empty configuration.
  explicit FinalStateTable(BranchingProcess& process);

  // The table falls into parts, by the state; each has its own events and memory.
  static constexpr std::uint32_t part_count = 32;
  static std::uint32_t part_of(std::uint64_t hash) {
    return static_cast<std::uint32_t>(hash >> 59);
  }

  // Makes e, whose state has the hash, a cut-off, or those events that e cuts off. Several threads
  // may insert at a time, each into other parts and with an `order` of its own.
  void insert(EventId e, std::uint64_t hash, ConfigurationOrder& order);

  // What insert() will look at first is brought into the cache of this worker: the slot of the
  // hash and, once that is there, the event in it.
  void fetch_slot(std::uint64_t hash) const;
  void fetch_member(std::uint64_t hash) const;

  // Takes out an event that was found to be a cut-off by other means.
  void remove(EventId e);

  // At the end, by several threads if need be, each with other cut-offs: the correspondent of a
  // cut-off becomes the least event that cuts it off and is none itself. False if there is none:
  // the correspondent stays, and may be a cut-off.
  bool resolve(EventId cut_off, ConfigurationOrder& order) const;

 private:
  struct Slot {
    std::uint64_t hash = 0;
    EventId member = empty;
  };
  // Open addressing: the members of one state stand in the order of insertion, none is moved
  // before another one of the same hash.
  struct alignas(64) Part {   // no cache line belongs to two
    std::vector<Slot> slots;  // a power of two
    std::uint32_t used = 0;   // slots that are not empty
  };
  static constexpr EventId empty = 0xFFFFFFFDu, removed = 0xFFFFFFFCu;

  template <class Visit>
  static void for_each_member(const Part& part, std::uint64_t hash, Visit visit);
  static void append(Part& part, std::uint64_t hash, EventId member);
  static void grow(Part& part);

  BranchingProcess& process_;
  std::array<Part, part_count> parts_;
};

}  // namespace vorel::unfolder
