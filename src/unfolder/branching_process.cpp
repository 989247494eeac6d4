#include "unfolder/branching_process.h"

#include <algorithm>

#include "base/memory_overflow.h"

namespace vorel {

BranchingProcess::BranchingProcess(const FlatNet& net)
    : net_{net}, chunks_(max_chunks), of_place_(net.place_count) {
  for (const PlaceId place : net.marked) add_condition(place, no_event);
}

EventId BranchingProcess::add_event(const UnfoldedEvent& event) {
  const std::scoped_lock lock(append_);
  const EventId id = event_count_.load(std::memory_order_relaxed);
  if (id == chunk_size * max_chunks) memory_overflow();
  auto& chunk = chunks_[id / chunk_size];
  if (chunk == nullptr) chunk = std::make_unique<Chunk>();
  UnfoldedEvent& stored = chunk->events[id % chunk_size];
  stored = event;
  stored.preset_data = copy_preset(event.preset());
  event_count_.store(id + 1, std::memory_order_relaxed);
  return id;
}

const ConditionId* BranchingProcess::copy_preset(std::span<const ConditionId> preset) {
  const auto size = static_cast<std::uint32_t>(preset.size());
  if (size > block_room_) {
    const std::uint32_t room = std::max(size, block_size);
    preset_blocks_.push_back(std::make_unique_for_overwrite<ConditionId[]>(room));
    block_room_ = room;
  }
  // Blocks are filled from their end.
  block_room_ -= size;
  ConditionId* const copy = preset_blocks_.back().get() + block_room_;
  std::ranges::copy(preset, copy);
  return copy;
}

void BranchingProcess::enter(EventId id) {
  UnfoldedEvent& entered = event(id);
  assert(entered.first_condition == no_condition && "an event enters once");
  entered.first_condition = condition_count();
  for (const PlaceId place : net_.postset[entered.transition]) add_condition(place, id);
}

void BranchingProcess::add_condition(PlaceId place, EventId producer) {
  of_place_[place].push_back(condition_count());
  place_.push_back(place);
  producer_.push_back(producer);
}

}  // namespace vorel
