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
#include <mutex>
#include <vector>

#include "unfolder/configuration_order.h"

namespace vorel::unfolder {

class FinalStateTable {
 public:
  // The initial state belongs to the empty configuration.
  explicit FinalStateTable(BranchingProcess& process);

  // Makes e a cut-off, or those events that e cuts off. Thread-safe; `order` is the caller's own.
  void insert(EventId e, ConfigurationOrder& order);

  // Takes out an event that was found to be a cut-off by other means.
  void remove(EventId e);

  // At the end, by several threads if need be, each with other cut-offs: the correspondent of a
  // cut-off becomes the least event that cuts it off and is none itself.
  void resolve(EventId cut_off, ConfigurationOrder& order) const;

 private:
  struct Slot {
    std::uint64_t hash = 0;
    EventId member = empty;
  };
  // Open addressing: the members of one state stand in the order of insertion, none is moved
  // before another one of the same hash.
  struct alignas(64) Stripe {  // no cache line has two locks
    std::mutex mutex;
    std::vector<Slot> slots;  // a power of two
    std::uint32_t used = 0;   // slots that are not empty
  };
  static constexpr EventId empty = 0xFFFFFFFDu, removed = 0xFFFFFFFCu;
  static constexpr std::size_t stripe_count = 64;

  static std::size_t stripe_of(std::uint64_t hash) { return hash >> 58; }
  template <class Visit>
  static void for_each_member(const Stripe& stripe, std::uint64_t hash, Visit visit);
  static void append(Stripe& stripe, std::uint64_t hash, EventId member);
  static void grow(Stripe& stripe);

  BranchingProcess& process_;
  std::array<Stripe, stripe_count> stripes_;
};

}  // namespace vorel::unfolder
