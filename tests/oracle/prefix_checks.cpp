#include "oracle/prefix_checks.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <utility>
#include <vector>

#include "oracle/history.h"
#include "oracle/property_model.h"

namespace vorel::oracle {
namespace {

template <class Conditions, class Places>
bool are_on(const Conditions& conditions, const Places& places) {
  std::multiset<const void*> found, wanted(places.begin(), places.end());
  for (const auto* c : conditions) found.insert(c->place);
  return found == wanted;
}

template <class N>
bool matches_arcs(const net::EventOf<N>& event) {
  return are_on(event.preset, event.transition->preset) &&
         are_on(event.postset, event.transition->postset);
}

template <class N>
bool matches_initial_marking(const net::PrefixOf<N>& prefix) {
  Marking marked(prefix.places.size());
  for (const auto& condition : prefix.conditions) {
    if (!condition->is_initial()) continue;
    if (marked[condition->place->index]) return false;
    marked[condition->place->index] = true;
  }
  return marked == initial_marking<N>(prefix);
}

template <class N>
bool lies_after_cut_off(const net::EventOf<N>& event) {
  return std::ranges::any_of(event.preset, [](const auto* condition) {
    return !condition->is_initial() && condition->pre_event->is_cut_off();
  });
}

template <class N>
std::string cut_off_fault(const net::PrefixOf<N>& prefix, const net::EventOf<N>& event) {
  if (!event.is_cut_off() || event.cut_off.is_unknown()) return "";
  const auto state = final_state(prefix, local_configuration(event));
  if (event.cut_off.is_initial_marking()) {
    const auto initial = final_state<N>(prefix, causes_of<N>({}));
    return state == initial ? "" : "does not return to the initial state";
  }
  // Several correspondents stand for one configuration.
  auto configuration = causes_of<N>({});
  for (const auto* other : event.cut_off.correspondents()) {
    if (other->is_cut_off()) return "has a cut-off as correspondent";
    configuration.merge(local_configuration(*other));
  }
  if (!is_conflict_free<N>(configuration)) return "has correspondents in conflict";
  return state == final_state(prefix, configuration)
             ? ""
             : "does not reach the state of its correspondent";
}

template <class N>
std::string event_fault(const net::PrefixOf<N>& prefix, const net::EventOf<N>& event) {
  if (!matches_arcs(event)) return "differs from its transition";
  if (lies_after_cut_off(event)) return "lies after a cut-off";
  if (!is_conflict_free<N>(local_configuration(event))) return "has a history with a conflict";
  if (!is_co_set<N>(event.preset)) return "consumes what cannot be there at once";
  return cut_off_fault(prefix, event);
}

// What is wrong with the cut of a configuration, of which this is the state.
template <class N>
std::string cut_fault(const net::PrefixOf<N>& prefix, const PropertyState& state) {
  if (std::ranges::count(state.holds[condition], true) !=
      std::ranges::count(state.holds[place], true)) {
    return "a cut has two conditions of one place";
  }
  std::vector<bool> has_event(prefix.transitions.size());
  for (const auto& e : prefix.events) {
    if (state.enabled[event][e->index]) has_event[e->transition->index] = true;
  }
  for (const auto& t : prefix.transitions) {
    if (state.enabled[transition][t->index] && !has_event[t->index]) {
      return "no event for " + t->name + " where it is enabled";
    }
  }
  return "";
}

}  // namespace

template <class N>
std::string branching_fault(const net::PrefixOf<N>& prefix) {
  if (!matches_initial_marking(prefix)) return "the initial conditions differ from the marking";
  std::set<std::pair<const void*, std::vector<const net::ConditionOf<N>*>>> known;
  for (const auto& event : prefix.events) {
    std::string fault = event_fault(prefix, *event);
    std::vector<const net::ConditionOf<N>*> preset(event->preset.begin(), event->preset.end());
    std::ranges::sort(preset);
    if (!known.emplace(event->transition, std::move(preset)).second) fault = "occurs twice";
    if (!fault.empty()) return "event " + std::to_string(event->index) + " " + fault;
  }
  return "";
}

template <class N>
std::string completeness_fault(const net::PrefixOf<N>& prefix, const StateGraph<N>& graph,
                               std::size_t max_configurations) {
  assert(graph.outcome == Exploration::complete);
  const auto all = configuration_states(prefix, StateKind::all, max_configurations);
  if (!all) return "there are too many configurations to try";
  std::set<FinalState> reached, reachable;
  for (const auto& [events, state] : *all) {
    if (std::string fault = cut_fault(prefix, state); !fault.empty()) return fault;
    Parity parity = initial_parity<N>(prefix);
    for (const auto number : events) count_edge(parity, *prefix.events[number]->transition);
    reached.insert({state.holds[place], parity});
  }
  for (const auto& state : graph.states) reachable.insert({state.marking, state.parity});
  if (reached == reachable) return "";
  return "represents " + std::to_string(reached.size()) + " states of " +
         std::to_string(reachable.size());
}

template std::string branching_fault(const net::NetPrefix&);
template std::string branching_fault(const net::StgPrefix&);
template std::string completeness_fault(const net::NetPrefix&, const StateGraph<net::Net>&,
                                        std::size_t);
template std::string completeness_fault(const net::StgPrefix&, const StateGraph<net::Stg>&,
                                        std::size_t);

}  // namespace vorel::oracle
