#include "oracle/reduction_checks.h"

#include <algorithm>
#include <cassert>

#include "net/clone_net.h"
#include "oracle/coding.h"
#include "oracle/resolution_checks.h"

namespace vorel::oracle {
namespace {

net::StgTransition& named(const net::Stg& stg, const std::string& name) {
  const auto found =
      std::ranges::find(stg.transitions, name, [](const auto& t) { return t->name; });
  assert(found != stg.transitions.end());
  return **found;
}

}  // namespace

net::Stg with_place(const net::Stg& stg, const WaitingPlace& place) {
  net::Stg result = net::clone_net(stg);
  net::StgPlace& added = base::append_new(result.places);
  added.name = "the new place";
  added.initial_marking = place.marked ? 1 : 0;
  for (const std::string& source : place.sources) net::add_arc(named(result, source), added);
  net::add_arc(added, named(result, place.target));
  net::sort_adjacency(result);
  return result;
}

Waiting judge(const net::Stg& stg, const WaitingPlace& place) {
  const net::Stg after = with_place(stg, place);
  if (resolution_fault(stg, after, {.resolved = false}).empty()) return Waiting::changes_nothing;
  const bool hides_hazards = !std::ranges::includes(signals_that_dummies_disable(explore(stg)),
                                                    signals_that_dummies_disable(explore(after)));
  const bool is_valid =
      !hides_hazards && resolution_fault(stg, after, {.resolved = false, .reduced = true}).empty();
  return is_valid ? Waiting::valid : Waiting::invalid;
}

bool are_concurrent(const StateGraph<net::Stg>& graph, const net::StgTransition& a,
                    const net::StgTransition& b) {
  const bool compete = std::ranges::any_of(a.preset, [&](const net::StgPlace* place) {
    return std::ranges::count(b.preset, place) != 0;
  });
  return !compete && std::ranges::any_of(graph.states, [&](const auto& state) {
    return is_enabled(state.marking, a) && is_enabled(state.marking, b);
  });
}

bool is_reversible(const StateGraph<net::Stg>& graph) {
  std::vector<bool> leads_back(graph.states.size());
  leads_back[0] = true;
  for (bool changed = true; changed;) {
    changed = false;
    for (std::size_t i = graph.states.size(); i-- > 0;) {
      const auto& arcs = graph.states[i].arcs;
      if (leads_back[i] ||
          std::ranges::none_of(arcs, [&](const auto& arc) { return leads_back[arc.target]; }))
        continue;
      changed = leads_back[i] = true;
    }
  }
  return std::ranges::count(leads_back, false) == 0;
}

}  // namespace vorel::oracle
