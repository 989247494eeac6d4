// unfolder/branching_process.h - the unfolding under construction, as arrays of numbers.
// Here:      events and conditions, in the prefix or still waiting to get in.
// Not here:  searching for events (unfolder/co_set_finder.h), the finished Prefix object.
//
// Every event found gets an EventId at once; producers have lower ids than consumers, but the ids
// of one batch depend on the threads. Conditions are numbered when their event enters the prefix,
// in an order that does not. Workers append events concurrently and without a lock; an event is
// written once, before anybody else learns its id, and never moves.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cassert>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "base/fetch.h"
#include "base/worker_pool.h"
#include "unfolder/flat_net.h"
#include "unfolder/room.h"

namespace vorel::unfolder {

using EventId = std::uint32_t;
using ConditionId = std::uint32_t;
inline constexpr EventId no_event = 0xFFFFFFFFu;  // "produced by nobody": initial
inline constexpr ConditionId no_condition = 0xFFFFFFFFu;

// Why an event is a cut-off.
inline constexpr EventId not_cut_off = 0xFFFFFFFFu;
inline constexpr EventId initial_state = 0xFFFFFFFEu;  // the correspondent is the initial marking

struct UnfoldedEvent {
  const ConditionId* preset_data = nullptr;  // sorted
  TransitionId transition = 0;
  std::uint32_t preset_size = 0, postset_size = 0;
  std::uint32_t size = 0;   // number of events of the local configuration
  std::uint32_t depth = 0;  // on the longest chain, itself included: its level in the Foata form
  ConditionId first_condition = no_condition;  // of its postset, once in the prefix
  EventId correspondent = not_cut_off;
  std::uint32_t dummies = 0;  // in the local configuration
  StateHash state;            // after the local configuration

  std::span<const ConditionId> preset() const { return {preset_data, preset_size}; }
};

// What walks through the past read, and nothing else, so that much of the past fits into a cache:
// the transition of an event, and the events that it follows directly, each once.
class Origin {
 public:
  // More causes lie in an array of the caller, which must stay.
  static constexpr std::uint32_t most_inside = 2;

  Origin() = default;
  Origin(TransitionId transition, std::span<const EventId> causes)
      : transition_{transition}, cause_count_{static_cast<std::uint32_t>(causes.size())} {
    if (causes.size() <= most_inside) {
      std::ranges::copy(causes, causes_.inside);
    } else {
      causes_.outside = causes.data();
    }
  }

  TransitionId transition() const { return transition_; }
  std::span<const EventId> causes() const {
    return {cause_count_ <= most_inside ? causes_.inside : causes_.outside, cause_count_};
  }

 private:
  TransitionId transition_ = 0;
  std::uint32_t cause_count_ = 0;
  union {
    EventId inside[most_inside] = {};
    const EventId* outside;
  } causes_;
};
static_assert(sizeof(Origin) == 16);

class BranchingProcess {
 public:
  explicit BranchingProcess(const FlatNet& net);

  const FlatNet& net() const { return net_; }

  // What a worker adds events with. Events point into it: it lives as long as the process is used.
  class EventRoom {
    friend class BranchingProcess;
    Room<ConditionId> arrays_;
    EventId next_ = 0, end_ = 0;  // ids that were taken for it
  };

  // Thread-safe. The preset and the events that produce it, each once, are copied into the room of
  // the caller.
  EventId add_event(const UnfoldedEvent& event, std::span<const EventId> causes, EventRoom& room);
  // Main thread only: from now on ids are taken so many at a time. Events with neighbouring ids
  // share cache lines, and the one counter belongs to all.
  void set_id_block(std::uint32_t size) { id_block_ = size; }
  // Main thread only: what is added from now on gets higher ids than all there is. Ids that are
  // left over belong to no event, unless they are the last ones.
  void drop_ids(EventRoom& room);
  // Main thread only: numbers the conditions of the events, in this order. They enter by
  // enter_conditions(), which any one thread calls for the same events; until then nobody asks for
  // the place or the producer of these, nor for the conditions of a place.
  void enter(std::span<const EventId> events);
  void enter_conditions(std::span<const EventId> events);
  // The same for many events, in this order, by all workers; nothing is entered afterwards, and
  // conditions_of() does not tell of what they produce.
  void enter_last(std::span<const EventId> events, base::WorkerPool& pool);

  // With those ids that belong to no event; there are none while ids are taken one at a time.
  std::uint32_t event_count() const { return event_count_.load(std::memory_order_relaxed); }
  std::uint32_t condition_count() const { return static_cast<std::uint32_t>(place_.size()); }
  UnfoldedEvent& event(EventId e) {
    assert(e < event_count());
    return chunk(e).events[e % chunk_size];
  }
  const UnfoldedEvent& event(EventId e) const {
    assert(e < event_count());
    return chunk(e).events[e % chunk_size];
  }
  const Origin& origin(EventId e) const {
    assert(e < event_count());
    return chunk(e).origins[e % chunk_size];
  }

  // Into the cache of this worker, without waiting for it.
  void fetch_event(EventId e) const { base::fetch(&event(e)); }
  void fetch_origin(EventId e) const { base::fetch(&origin(e)); }

  PlaceId place(ConditionId c) const {
    assert(c < condition_count());
    return place_[c];
  }
  // no_event if initial.
  EventId producer(ConditionId c) const {
    assert(c < condition_count());
    return producer_[c];
  }
  // All conditions of the place, by number.
  std::span<const ConditionId> conditions_of(PlaceId p) const { return of_place_[p]; }

 private:
  static constexpr std::uint32_t chunk_size = 4096;
  static constexpr std::uint32_t max_chunks = 1u << 17;  // half a billion events
  // Its memory is not initialised: each element is written by the worker that adds the event, first
  // of all.
  struct alignas(64) Chunk {
    std::array<UnfoldedEvent, chunk_size> events;
    std::array<Origin, chunk_size> origins;
  };
  // Whoever knows an event learnt of it in a way that orders its writing before.
  Chunk& chunk(EventId e) const { return *chunks_[e / chunk_size].load(std::memory_order_relaxed); }
  void make_chunk(std::uint32_t number);

  // Changed with every event that is found: what the workers only read lies in other cache lines.
  alignas(64) std::atomic<std::uint32_t> event_count_{0};
  alignas(64) const FlatNet& net_;
  std::uint32_t id_block_ = 1;
  std::mutex make_chunk_;  // guards chunk_room_
  Room<Chunk> chunk_room_;
  std::unique_ptr<std::atomic<Chunk*>[]> chunks_;  // by number, null until there is one
  std::vector<PlaceId> place_;                     // by condition
  std::vector<EventId> producer_;                  // by condition
  std::vector<std::vector<ConditionId>> of_place_;
};

}  // namespace vorel::unfolder
