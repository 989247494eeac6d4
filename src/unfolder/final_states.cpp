#include "unfolder/final_states.h"

#include <array>
#include <cassert>
#include <utility>

namespace vorel::unfolder {
namespace {

constexpr std::size_t first_capacity = 16;
static_assert((first_capacity & (first_capacity - 1)) == 0);

}  // namespace

FinalStateTable::FinalStateTable(BranchingProcess& process) : process_{process} {
  for (Stripe& stripe : stripes_) stripe.slots.resize(first_capacity);
  const std::uint64_t hash = StateHash{}.value();
  append(stripes_[stripe_of(hash)], hash, initial_state);
}

// Calls visit(slot index) for each member with the hash until it gives false.
template <class Visit>
void FinalStateTable::for_each_member(const Stripe& stripe, std::uint64_t hash, Visit visit) {
  const std::size_t mask = stripe.slots.size() - 1;
  for (std::size_t i = hash & mask; stripe.slots[i].member != empty; i = (i + 1) & mask) {
    const Slot& slot = stripe.slots[i];
    if (slot.hash == hash && slot.member != removed && !visit(i)) return;
  }
}

void FinalStateTable::insert(EventId e, ConfigurationOrder& order) {
  assert(process_.event(e).correspondent == not_cut_off && "an event is judged once");
  const std::uint64_t hash = process_.event(e).state.value();
  Stripe& stripe = stripes_[stripe_of(hash)];
  const std::scoped_lock lock(stripe.mutex);
  bool is_cut_off = false, has_replaced = false;
  for_each_member(stripe, hash, [&](std::size_t i) {
    EventId& member = stripe.slots[i].member;
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
  if (!is_cut_off && !has_replaced) append(stripe, hash, e);
}

void FinalStateTable::remove(EventId e) {
  const std::uint64_t hash = process_.event(e).state.value();
  Stripe& stripe = stripes_[stripe_of(hash)];
  [[maybe_unused]] bool is_found = false;
  for_each_member(stripe, hash, [&](std::size_t i) {
    if (stripe.slots[i].member != e) return true;
    stripe.slots[i].member = removed;
    is_found = true;
    return false;
  });
  assert(is_found && "an event that no other cuts off is a member");
}

void FinalStateTable::resolve(EventId cut_off, ConfigurationOrder& order) const {
  EventId& correspondent = process_.event(cut_off).correspondent;
  assert(correspondent != not_cut_off && "only cut-offs have a correspondent");
  if (correspondent == initial_state) return;
  const std::uint64_t hash = process_.event(cut_off).state.value();
  const Stripe& stripe = stripes_[stripe_of(hash)];
  std::vector<EventId> members;
  for_each_member(stripe, hash, [&](std::size_t i) {
    if (stripe.slots[i].member != initial_state) members.push_back(stripe.slots[i].member);
    return true;
  });
  if (members.size() == 1) {
    correspondent = members.front();
    return;
  }
  EventId least = no_event;
  for (const EventId member : members) {
    const auto against_cut_off = order.compare(cut_off, member);
    if (!against_cut_off.equal_states || against_cut_off.order <= 0) continue;
    if (least == no_event || order.compare(std::array{member}, process_.event(member).size,
                                           std::array{least}, process_.event(least).size)
                                     .order < 0) {
      least = member;
    }
  }
  if (least != no_event) correspondent = least;
}

void FinalStateTable::append(Stripe& stripe, std::uint64_t hash, EventId member) {
  if (2 * (stripe.used + 1) > stripe.slots.size()) grow(stripe);
  const std::size_t mask = stripe.slots.size() - 1;
  assert((stripe.slots.size() & mask) == 0 && stripe.used < stripe.slots.size() &&
         "there is a free slot to end a search");
  std::size_t i = hash & mask;
  while (stripe.slots[i].member != empty) i = (i + 1) & mask;
  stripe.slots[i] = {hash, member};
  ++stripe.used;
}

void FinalStateTable::grow(Stripe& stripe) {
  std::vector<Slot> old(2 * stripe.slots.size());
  std::swap(old, stripe.slots);
  stripe.used = 0;
  // Start behind a gap, so that a run of slots that wraps around keeps its order.
  std::size_t start = 0;
  while (old[start].member != empty) ++start;
  for (std::size_t k = 0; k < old.size(); ++k) {
    const Slot& slot = old[(start + k) % old.size()];
    if (slot.member != empty && slot.member != removed) append(stripe, slot.hash, slot.member);
  }
}

}  // namespace vorel::unfolder
