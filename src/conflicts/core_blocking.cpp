#include "conflicts/core_blocking.h"

#include <algorithm>
#include <cassert>

namespace vorel {
namespace {

using Event = StgPrefix::Event;

void sort_unique(EventSet& set) {
  std::ranges::sort(set);
  const auto repeated = std::ranges::unique(set);
  set.erase(repeated.begin(), repeated.end());
}

// Direct neighbours are enough: two configurations that differ in an indirect one, with the core
// between, differ in a direct one too.
EventSet successors(const StgPrefix& prefix, const EventSet& side, const EventSet& sum) {
  EventSet set;
  for (const std::uint32_t number : side) {
    for (const auto* condition : prefix.events[number]->postset) {
      for (const Event* next : condition->postset) {
        if (!next->is_cut_off()) set.push_back(next->index);
      }
    }
  }
  sort_unique(set);
  return set_difference(set, sum);
}

EventSet predecessors(const StgPrefix& prefix, const EventSet& side, const EventSet& sum) {
  EventSet set;
  for (const std::uint32_t number : side) {
    for (const auto* condition : prefix.events[number]->preset) {
      if (!condition->is_initial()) set.push_back(condition->pre_event->index);
    }
  }
  sort_unique(set);
  return set_difference(set, sum);
}

}  // namespace

std::vector<BlockedPairs> pairs_explained_by(const StgPrefix& prefix, const Core& core,
                                             bool conflict_free) {
  assert(!core.sum.empty());
  std::vector<EventSet> shared{{}};
  for (const EventSet& side :
       {set_difference(core.second, core.first), set_difference(core.first, core.second)}) {
    std::vector<EventSet> neighbours{successors(prefix, side, core.sum)};
    if (conflict_free) neighbours.push_back(predecessors(prefix, side, core.sum));
    std::vector<EventSet> combinations;
    for (const EventSet& one : shared) {
      for (const EventSet& other : neighbours) combinations.push_back(set_union(one, other));
    }
    shared = std::move(combinations);
  }
  std::ranges::sort(shared, {}, &EventSet::size);  // a smaller set blocks more than one above it
  std::vector<BlockedPairs> blocked;
  for (EventSet& set : shared) {
    const bool is_implied = std::ranges::any_of(
        blocked, [&set](const BlockedPairs& pairs) { return includes(set, pairs.shared); });
    if (!is_implied) blocked.push_back({core.sum, std::move(set)});
  }
  return blocked;
}

}  // namespace vorel
