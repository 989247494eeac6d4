#include "conflicts/core_blocking.h"

#include <algorithm>
#include <cassert>

namespace vorel::conflicts {
namespace {

using Event = net::StgPrefix::Event;

void sort_unique(configuration::EventSet& set) {
  std::ranges::sort(set);
  const auto repeated = std::ranges::unique(set);
  set.erase(repeated.begin(), repeated.end());
}

// Direct neighbours are enough: two configurations that differ in an indirect one, with the core
// between, differ in a direct one too.
configuration::EventSet successors(const net::StgPrefix& prefix,
                                   const configuration::EventSet& side,
                                   const configuration::EventSet& sum) {
  configuration::EventSet set;
  for (const std::uint32_t number : side) {
    for (const auto* condition : prefix.events[number]->postset) {
      for (const Event* next : condition->postset) {
        if (!next->is_cut_off()) set.push_back(next->index);
      }
    }
  }
  sort_unique(set);
  return configuration::set_difference(set, sum);
}

configuration::EventSet predecessors(const net::StgPrefix& prefix,
                                     const configuration::EventSet& side,
                                     const configuration::EventSet& sum) {
  configuration::EventSet set;
  for (const std::uint32_t number : side) {
    for (const auto* condition : prefix.events[number]->preset) {
      if (!condition->is_initial()) set.push_back(condition->pre_event->index);
    }
  }
  sort_unique(set);
  return configuration::set_difference(set, sum);
}

}  // namespace

std::vector<BlockedPairs> pairs_explained_by(const net::StgPrefix& prefix, const Core& core,
                                             bool conflict_free) {
  assert(!core.sum.empty());
  std::vector<configuration::EventSet> shared{{}};
  for (const configuration::EventSet& side :
       {configuration::set_difference(core.second, core.first),
        configuration::set_difference(core.first, core.second)}) {
    std::vector<configuration::EventSet> neighbours{successors(prefix, side, core.sum)};
    if (conflict_free) neighbours.push_back(predecessors(prefix, side, core.sum));
    std::vector<configuration::EventSet> combinations;
    for (const configuration::EventSet& one : shared) {
      for (const configuration::EventSet& other : neighbours)
        combinations.push_back(configuration::set_union(one, other));
    }
    shared = std::move(combinations);
  }
  std::ranges::sort(shared, {},
                    &configuration::EventSet::size);  // a smaller set blocks more than one above it
  std::vector<BlockedPairs> blocked;
  for (configuration::EventSet& set : shared) {
    const bool is_implied = std::ranges::any_of(blocked, [&set](const BlockedPairs& pairs) {
      return configuration::includes(set, pairs.shared);
    });
    if (!is_implied) blocked.push_back({core.sum, std::move(set)});
  }
  return blocked;
}

}  // namespace vorel::conflicts
