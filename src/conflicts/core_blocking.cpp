#include "conflicts/core_blocking.h"

#include <algorithm>
#include <cassert>

#include "base/sort_unique.h"

namespace vorel::conflicts {
namespace {

using Event = net::StgPrefix::Event;

configuration::EventSet successors(const net::StgPrefix& prefix,
                                   const configuration::EventSet& side,
                                   const configuration::EventSet& sum) {
  configuration::EventSet set;
  for (const configuration::StgEventId id : side) {
    for (const auto* condition : base::element(prefix.events, id).postset) {
      for (const Event* next : condition->postset) set.push_back(base::id_of(*next));
    }
  }
  base::sort_unique(set);
  return configuration::set_difference(set, sum);
}

configuration::EventSet predecessors(const net::StgPrefix& prefix,
                                     const configuration::EventSet& side,
                                     const configuration::EventSet& sum) {
  configuration::EventSet set;
  for (const configuration::StgEventId id : side) {
    for (const auto* condition : base::element(prefix.events, id).preset) {
      if (!condition->is_initial()) set.push_back(base::id_of(*condition->pre_event));
    }
  }
  base::sort_unique(set);
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
