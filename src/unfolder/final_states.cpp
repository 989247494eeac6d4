#include "unfolder/final_states.h"

#include <array>
#include <cassert>
#include <utility>

#include "base/fetch.h"

namespace vorel::unfolder {
namespace {

constexpr std::size_t first_capacity = 16;
static_assert((first_capacity & (first_capacity - 1)) == 0);
static_assert(FinalStateTable::part_count == 32, "the highest five bits of a hash tell the part");

}  // namespace

FinalStateTable::FinalStateTable(BranchingProcess& process) : process_{process} {
  for (Part& part : parts_) part.slots.resize(first_capacity);
  const std::uint64_t hash = StateHash{}.value();
  append(parts_[part_of(hash)], hash, initial_state);
}

// Calls visit(slot index) for each member with the hash until it gives false.
template <class Visit>
void FinalStateTable::for_each_member(const Part& part, std::uint64_t hash, Visit visit) {
  const std::size_t mask = part.slots.size() - 1;
  for (std::size_t i = hash & mask; part.slots[i].member != empty; i = (i + 1) & mask) {
    const Slot& slot = part.slots[i];
    if (slot.hash == hash && slot.member != removed && !visit(i)) return;
  }
}

void FinalStateTable::insert(EventId e, std::uint64_t hash, ConfigurationOrder& order) {
  assert(process_.event(e).correspondent == not_cut_off && "an event is judged once");
  assert(process_.event(e).state.value() == hash);
  Part& part = parts_[part_of(hash)];
  bool is_cut_off = false, has_replaced = false;
  for_each_member(part, hash, [&](std::size_t i) {
    EventId& member = part.slots[i].member;
    const auto comparison =
        member == initial_state ? order.compare_to_empty(e) : order.compare(e, member);
    if (!comparison.equal_states || comparison.order == 0) return true;
    if (comparison.order > 0) {
      assert(!has_replaced && "what e cuts off would be cut off by this member");
      process_.event(e).correspondent = member;
      is_cut_off = true;
      return false;
    }
    process_.event(member).correspondent = e;
    member = std::exchange(has_replaced, true) ? removed : e;
    return true;
  });
  if (!is_cut_off && !has_replaced) append(part, hash, e);
}

void FinalStateTable::fetch_slot(std::uint64_t hash) const {
  const Part& part = parts_[part_of(hash)];
  base::fetch(&part.slots[hash & (part.slots.size() - 1)]);
}

void FinalStateTable::fetch_member(std::uint64_t hash) const {
  const Part& part = parts_[part_of(hash)];
  const Slot& slot = part.slots[hash & (part.slots.size() - 1)];
  if (slot.hash == hash && slot.member < removed) process_.fetch_origin(slot.member);
}

void FinalStateTable::remove(EventId e) {
  const std::uint64_t hash = process_.event(e).state.value();
  Part& part = parts_[part_of(hash)];
  [[maybe_unused]] bool is_found = false;
  for_each_member(part, hash, [&](std::size_t i) {
    if (part.slots[i].member != e) return true;
    part.slots[i].member = removed;
    is_found = true;
    return false;
  });
  assert(is_found && "an event that no other cuts off is a member");
}

bool FinalStateTable::resolve(EventId cut_off, ConfigurationOrder& order) const {
  EventId& correspondent = process_.event(cut_off).correspondent;
  assert(correspondent != not_cut_off && "only cut-offs have a correspondent");
  if (correspondent == initial_state) return true;
  const std::uint64_t hash = process_.event(cut_off).state.value();
  const Part& part = parts_[part_of(hash)];
  EventId least = no_event;
  bool has_several = false;
  for_each_member(part, hash, [&](std::size_t i) {
    const EventId member = part.slots[i].member;
    if (member == initial_state) return true;
    has_several = least != no_event;
    least = member;
    return !has_several;
  });
  if (has_several) {
    least = no_event;
    for_each_member(part, hash, [&](std::size_t i) {
      const EventId member = part.slots[i].member;
      if (member == initial_state) return true;
      const auto against_cut_off = order.compare(cut_off, member);
      if (!against_cut_off.equal_states || against_cut_off.order <= 0) return true;
      if (least == no_event || order.compare(std::array{member}, std::array{least}).order < 0) {
        least = member;
      }
      return true;
    });
  }
  if (least != no_event) correspondent = least;
  return least != no_event;
}

void FinalStateTable::append(Part& part, std::uint64_t hash, EventId member) {
  if (2 * (part.used + 1) > part.slots.size()) grow(part);
  const std::size_t mask = part.slots.size() - 1;
  assert((part.slots.size() & mask) == 0 && part.used < part.slots.size() &&
         "there is a free slot to end a search");
  std::size_t i = hash & mask;
  while (part.slots[i].member != empty) i = (i + 1) & mask;
  part.slots[i] = {hash, member};
  ++part.used;
}

void FinalStateTable::grow(Part& part) {
  std::vector<Slot> old(2 * part.slots.size());
  std::swap(old, part.slots);
  part.used = 0;
  // Start behind a gap, so that a run of slots that wraps around keeps its order.
  std::size_t start = 0;
  while (old[start].member != empty) ++start;
  for (std::size_t k = 0; k < old.size(); ++k) {
    const Slot& slot = old[(start + k) % old.size()];
    if (slot.member != empty && slot.member != removed) append(part, slot.hash, slot.member);
  }
}

}  // namespace vorel::unfolder
