#include "unfolder/branching_process.h"

#include <functional>
#include <utility>

#include "base/memory_overflow.h"

namespace vorel::unfolder {

BranchingProcess::BranchingProcess(const FlatNet& net)
    : net_{net},
      chunks_{std::make_unique<std::atomic<Chunk*>[]>(max_chunks)},
      of_place_(net.place_count) {
  for (const PlaceId place : net.marked) {
    of_place_[place].push_back(condition_count());
    place_.push_back(place);
    producer_.push_back(no_event);
  }
}

EventId BranchingProcess::add_event(const UnfoldedEvent& event, std::span<const EventId> causes,
                                    EventRoom& room) {
  assert(event.size >= 1 && event.depth >= 1 && event.depth <= event.size && "it is measured");
  assert(event.preset_size == net_.preset[event.transition].size());
  assert(std::ranges::adjacent_find(event.preset(), std::greater_equal{}) == event.preset().end() &&
         "presets ascend, each condition once");
  assert(event.preset().back() < condition_count() && "only what is in the prefix is consumed");
  if (room.next_ == room.end_) {
    room.next_ = event_count_.fetch_add(id_block_, std::memory_order_relaxed);
    room.end_ = room.next_ + id_block_;
  }
  const EventId id = room.next_++;
  if (id >= chunk_size * (max_chunks - 1)) base::memory_overflow();
  const std::uint32_t number = id / chunk_size;
  if (chunks_[number].load(std::memory_order_acquire) == nullptr) make_chunk(number);
  UnfoldedEvent& stored = this->event(id);
  stored = event;
  ConditionId* const preset = room.arrays_.take(event.preset_size);
  std::ranges::copy(event.preset(), preset);
  stored.preset_data = preset;
  if (causes.size() > Origin::most_inside) {
    EventId* const kept = room.arrays_.take(causes.size());
    std::ranges::copy(causes, kept);
    causes = {kept, causes.size()};
  }
  chunk(id).origins[id % chunk_size] = Origin(event.transition, causes);
  return id;
}

void BranchingProcess::drop_ids(EventRoom& room) {
  if (room.end_ == event_count()) event_count_.store(room.next_, std::memory_order_relaxed);
  room.end_ = room.next_;
}

void BranchingProcess::make_chunk(std::uint32_t number) {
  const std::scoped_lock lock(make_chunk_);
  if (chunks_[number].load(std::memory_order_relaxed) != nullptr) return;  // somebody was faster
  chunks_[number].store(chunk_room_.take(1), std::memory_order_release);
}

void BranchingProcess::enter(std::span<const EventId> events) {
  std::uint64_t next = condition_count();
  for (const EventId id : events) {
    UnfoldedEvent& entered = event(id);
    assert(entered.first_condition == no_condition && "an event enters once");
    assert(entered.postset_size == net_.postset[entered.transition].size());
    entered.first_condition = static_cast<ConditionId>(next);
    next += entered.postset_size;
  }
  assert(next < no_condition);
  place_.resize(next);
  producer_.resize(next);
}

void BranchingProcess::enter_conditions(std::span<const EventId> events) {
  for (const EventId id : events) {
    const UnfoldedEvent& entered = event(id);
    ConditionId c = entered.first_condition;
    for (const PlaceId place : net_.postset[entered.transition]) {
      of_place_[place].push_back(c);
      place_[c] = place;
      producer_[c++] = id;
    }
  }
}

void BranchingProcess::enter_last(std::span<const EventId> events, base::WorkerPool& pool) {
  constexpr std::uint32_t range_size = 1024;
  const auto count = static_cast<std::uint32_t>(events.size());
  // By range: how many conditions it produces, then the first of them.
  std::vector<std::uint64_t> first(count / range_size + 1);
  pool.run_ranges(count, range_size, [&](std::uint32_t, std::uint32_t i, std::uint32_t end) {
    std::uint64_t& sum = first[i / range_size];
    for (; i < end; ++i) sum += event(events[i]).postset_size;
  });
  std::uint64_t next = condition_count();
  for (std::uint64_t& sum : first) sum = std::exchange(next, next + sum);
  assert(next < no_condition);
  place_.resize(next);
  producer_.resize(next);
  pool.run_ranges(count, range_size, [&](std::uint32_t, std::uint32_t i, std::uint32_t end) {
    auto c = static_cast<ConditionId>(first[i / range_size]);
    for (; i < end; ++i) {
      UnfoldedEvent& entered = event(events[i]);
      assert(entered.first_condition == no_condition && "an event enters once");
      entered.first_condition = c;
      for (const PlaceId place : net_.postset[entered.transition]) {
        place_[c] = place;
        producer_[c++] = events[i];
      }
    }
  });
}

}  // namespace vorel::unfolder
