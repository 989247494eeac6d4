#include "net/occurrence_depth.h"

#include <algorithm>
#include <cassert>

#include "net/causal_arrays.h"
#include "net/causality.h"

namespace vorel::net {
namespace {

// Numbers the places that may have a condition at a depth above 1: one has a second condition, and
// some condition is consumed.
template <class N>
class PlaceNumbers {
 public:
  explicit PlaceNumbers(const PrefixOf<N>& prefix)
      : number_(prefix.places.size(), base::no_index), uses_(prefix.places.size()) {
    for (const auto& condition : prefix.conditions) {
      if (condition->is_initial()) note(*condition);
    }
    for (const auto& event : prefix.events) {
      for (const auto* condition : event->postset) note(*condition);
    }
    for (const auto& place : prefix.places) {
      const Uses& uses = uses_[*place];
      if (uses.conditions > 1 && uses.is_consumed) number_[*place] = count_++;
    }
  }

  std::uint32_t count() const { return count_; }
  std::uint32_t operator[](const typename N::Place& place) const { return number_[place]; }

 private:
  struct Uses {
    std::uint32_t conditions = 0;
    bool is_consumed = false;
  };
  void note(const ConditionOf<N>& condition) {
    Uses& uses = uses_[*condition.place];
    ++uses.conditions;
    uses.is_consumed = uses.is_consumed || !condition.postset.empty();
  }

  base::IndexedBy<typename N::Place, std::uint32_t> number_;
  base::IndexedBy<typename N::Place, Uses> uses_;
  std::uint32_t count_ = 0;
};

}  // namespace

template <class N>
OccurrenceDepths<N>::OccurrenceDepths(const PrefixOf<N>& prefix)
    : first_left_out_(prefix.events.size()) {
  number_slots(prefix);
  count(prefix);
}

// Carries along how many conditions of each place have been consumed on the way.
template <class N>
void OccurrenceDepths<N>::count(const PrefixOf<N>& prefix) {
  const auto order = topological_order(prefix);
  assert(order.size() == prefix.events.size() && "a prefix has no causal cycles");
  const PlaceNumbers<N> places(prefix);
  CausalArrays<N> consumed(prefix, order, places.count());
  const auto larger = [](std::uint32_t, std::uint32_t a, std::uint32_t b) {
    return std::max(a, b);
  };
  const auto unknown = [](const Event&, const Event&) { return false; };
  for (const Event* event : order) {
    consumed.visit(*event, larger, unknown);
    for (const Condition* condition : event->preset) {
      const std::uint32_t place = places[*condition->place];
      if (place == base::no_index) continue;
      const std::uint32_t depth = depth_[condition->index];
      if (consumed.at(place) < depth) consumed.set(place, depth);
    }
    visit_slots(*event, [&](const Condition& condition, std::uint32_t slot) {
      const std::uint32_t place = places[*condition.place];
      if (place != base::no_index) depth_[slot] = consumed.at(place) + 1;
    });
  }
}

template <class N>
void OccurrenceDepths<N>::number_slots(const PrefixOf<N>& prefix) {
  auto slot = static_cast<std::uint32_t>(prefix.conditions.size());
  for (const auto& event : prefix.events) {
    first_left_out_[*event] = slot;
    for (const Condition* condition : event->postset)
      slot += condition->index == base::no_index ? 1 : 0;
  }
  depth_.assign(slot, 1);
}

template class OccurrenceDepths<Net>;
template class OccurrenceDepths<Stg>;

}  // namespace vorel::net
