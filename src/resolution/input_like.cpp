#include "resolution/input_like.h"

#include <algorithm>
#include <unordered_set>

namespace vorel::resolution {

std::vector<const net::StgTransition*> closure_through_dummies(
    const net::StgTransition& transition) {
  std::vector<const net::StgTransition*> closure{&transition};
  std::unordered_set<const net::StgTransition*> seen{&transition};
  for (std::size_t next = 0; next < closure.size(); ++next) {
    if (!closure[next]->signal->is_dummy()) continue;
    for (const net::StgPlace* place : closure[next]->postset)
      for (const net::StgTransition* consumer : place->postset)
        if (seen.insert(consumer).second) closure.push_back(consumer);
  }
  return closure;
}

bool is_input_like(const net::StgTransition& transition) {
  return std::ranges::any_of(closure_through_dummies(transition), [](const auto* reached) {
    return reached->signal->kind == net::SignalKind::input;
  });
}

bool is_dead(const net::Instances<net::StgPrefix>& instances,
             const net::StgTransition& transition) {
  return instances.events_of(base::id_of(transition)).empty();
}

}  // namespace vorel::resolution
