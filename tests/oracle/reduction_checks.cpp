#include "oracle/reduction_checks.h"

#include <algorithm>
#include <cassert>
#include <map>

#include "net/clone_net.h"
#include "oracle/coding.h"

namespace vorel::oracle {
namespace {

net::StgTransition& named(const net::Stg& stg, const std::string& name) {
  const auto found =
      std::ranges::find(stg.transitions, name, [](const auto& t) { return t->name; });
  assert(found != stg.transitions.end());
  return **found;
}

// By state: the names of the transitions that can fire sometime.
std::vector<std::set<std::string>> futures(const StateGraph<net::Stg>& graph) {
  std::vector<std::set<std::string>> result(graph.states.size());
  for (bool changed = true; changed;) {
    changed = false;
    for (std::size_t i = graph.states.size(); i-- > 0;) {
      const std::size_t before = result[i].size();
      for (const auto& arc : graph.states[i].arcs) {
        result[i].insert(arc.transition->name);
        result[i].insert(result[arc.target].begin(), result[arc.target].end());
      }
      if (result[i].size() != before) changed = true;
    }
  }
  return result;
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

Waiting judge(const net::Stg& stg, const StateGraph<net::Stg>& graph, const WaitingPlace& place) {
  const net::Stg after = with_place(stg, place);
  const auto reduced = explore(after, 2 * graph.states.size() + 10);
  if (reduced.outcome == Exploration::unsafe) return Waiting::unsafe;
  assert(reduced.outcome == Exploration::complete);
  std::map<std::pair<Marking, Parity>, std::size_t> state_of;
  for (std::size_t i = 0; i < graph.states.size(); ++i) {
    state_of[{graph.states[i].marking, graph.states[i].parity}] = i;
  }
  const auto could = futures(graph), can = futures(reduced);
  bool changes = false;
  for (std::size_t i = 0; i < reduced.states.size(); ++i) {
    Marking marking = reduced.states[i].marking;
    marking.pop_back();  // the new place is the last
    const std::size_t before = state_of.at({marking, reduced.states[i].parity});
    if (!std::ranges::includes(can[i], could[before])) return Waiting::stops;
    changes |= reduced.states[i].arcs.size() != graph.states[before].arcs.size();
  }
  if (!changes) return Waiting::changes_nothing;
  auto hurt = disabled_signals(after, reduced);
  const auto known = disabled_signals(stg, graph);
  const SignalSet lost = signals_that_dummies_disable(graph);
  std::erase_if(hurt, [&](const auto& pair) { return lost.contains(pair.first); });
  return std::ranges::includes(known, hurt) ? Waiting::valid : Waiting::disables;
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
