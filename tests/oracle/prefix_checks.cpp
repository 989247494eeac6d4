#include "oracle/prefix_checks.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <utility>
#include <vector>

#include "oracle/history.h"

namespace vorel::oracle {
namespace {

template <class N>
using Cut = std::set<const net::ConditionOf<N>*>;

template <class List>
std::vector<std::uint32_t> sorted_places(const List& conditions) {
  std::vector<std::uint32_t> places;
  for (const auto* condition : conditions) places.push_back(condition->place->index);
  std::ranges::sort(places);
  return places;
}

template <class Places>
std::vector<std::uint32_t> sorted_indices(const Places& places) {
  std::vector<std::uint32_t> indices;
  for (const auto* place : places) indices.push_back(place->index);
  std::ranges::sort(indices);
  return indices;
}

template <class N>
bool matches_arcs(const net::EventOf<N>& event) {
  return sorted_places(event.preset) == sorted_indices(event.transition->preset) &&
         sorted_places(event.postset) == sorted_indices(event.transition->postset);
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

// Walks all configurations without cut-offs, each as its cut and the parities on the way to it.
template <class N>
class ConfigurationWalk {
 public:
  ConfigurationWalk(const net::PrefixOf<N>& prefix, std::size_t max_configurations)
      : prefix_{prefix}, max_configurations_{max_configurations} {}

  std::string run() {
    Cut<N> initial;
    for (const auto& condition : prefix_.conditions) {
      if (condition->is_initial()) initial.insert(condition.get());
    }
    visit(std::move(initial), initial_parity<N>(prefix_));
    while (!open_.empty()) {
      const auto [cut, parity] = std::move(open_.back());
      open_.pop_back();
      if (std::string fault = expand(cut, parity); !fault.empty()) return fault;
      if (seen_.size() > max_configurations_) return "there are too many configurations to try";
    }
    return "";
  }

  const std::set<FinalState>& states() const { return states_; }

 private:
  void visit(Cut<N> cut, Parity parity) {
    if (seen_.insert(cut).second) open_.emplace_back(std::move(cut), std::move(parity));
  }

  std::string expand(const Cut<N>& cut, const Parity& parity) {
    Marking marking(prefix_.places.size());
    for (const auto* condition : cut) {
      if (marking[condition->place->index]) return "a cut has two conditions of one place";
      marking[condition->place->index] = true;
    }
    states_.insert({marking, parity});
    const auto events = events_at(cut);
    for (const auto& transition : prefix_.transitions) {
      const bool has_event = std::ranges::any_of(
          events, [&](const auto* event) { return event->transition == transition.get(); });
      if (is_enabled(marking, *transition) && !has_event) {
        return "no event for " + transition->name + " where it is enabled";
      }
    }
    for (const auto* event : events) step(cut, parity, *event);
    return "";
  }

  std::set<const net::EventOf<N>*> events_at(const Cut<N>& cut) const {
    std::set<const net::EventOf<N>*> events;
    for (const auto* condition : cut) {
      for (const auto* event : condition->postset) {
        const bool is_enabled_here = std::ranges::all_of(
            event->preset, [&](const auto* needed) { return cut.contains(needed); });
        if (is_enabled_here) events.insert(event);
      }
    }
    return events;
  }

  void step(Cut<N> cut, Parity parity, const net::EventOf<N>& event) {
    if (event.is_cut_off()) return;
    for (const auto* condition : event.preset) cut.erase(condition);
    cut.insert(event.postset.begin(), event.postset.end());
    count_edge(parity, *event.transition);
    visit(std::move(cut), std::move(parity));
  }

  const net::PrefixOf<N>& prefix_;
  std::size_t max_configurations_;
  std::vector<std::pair<Cut<N>, Parity>> open_;
  std::set<Cut<N>> seen_;
  std::set<FinalState> states_;
};

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
  ConfigurationWalk<N> walk(prefix, max_configurations);
  if (std::string fault = walk.run(); !fault.empty()) return fault;
  std::set<FinalState> reachable;
  for (const auto& state : graph.states) reachable.insert({state.marking, state.parity});
  if (walk.states() == reachable) return "";
  return "represents " + std::to_string(walk.states().size()) + " states of " +
         std::to_string(reachable.size());
}

template std::string branching_fault(const net::NetPrefix&);
template std::string branching_fault(const net::StgPrefix&);
template std::string completeness_fault(const net::NetPrefix&, const StateGraph<net::Net>&,
                                        std::size_t);
template std::string completeness_fault(const net::StgPrefix&, const StateGraph<net::Stg>&,
                                        std::size_t);

}  // namespace vorel::oracle
