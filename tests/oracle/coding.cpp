#include "oracle/coding.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <map>

namespace vorel::oracle {
namespace {

// False when it contradicts what is known.
bool learn(std::uint8_t& value, bool is_one) {
  const std::uint8_t wanted = is_one ? 1 : 0;
  if (value == net::unknown_value) value = wanted;
  return value == wanted;
}

bool learn_from_arcs(const StateGraph<net::Stg>::State& state, Values& values) {
  for (const auto& arc : state.arcs) {
    const net::StgTransition& transition = *arc.transition;
    if (transition.signal->is_dummy() || transition.sign == net::Sign::toggle) continue;
    const std::uint32_t signal = transition.signal->index;
    const bool is_one_before = transition.sign == net::Sign::minus;
    if (!learn(values[signal], is_one_before != state.parity[signal])) return false;
  }
  return true;
}

bool covers(const Values& large, const Values& small) {
  for (std::size_t i = 0; i < large.size(); ++i) {
    if (small[i] > large[i]) return false;
  }
  return true;
}

bool next_value(const StateGraph<net::Stg>& graph, std::uint32_t state, const Values& code,
                std::uint32_t signal) {
  return (code[signal] == 1) != enabled_through_dummies(graph, state).contains(signal);
}

}  // namespace

std::optional<Values> find_initial_values(const net::Stg& stg, const StateGraph<net::Stg>& graph) {
  assert(graph.outcome == Exploration::complete);
  Values values;
  for (const auto& signal : stg.signals) {
    values.push_back(signal->is_dummy() ? std::uint8_t{0} : signal->initial_value);
  }
  for (const auto& state : graph.states) {
    if (!learn_from_arcs(state, values)) return std::nullopt;
  }
  for (std::uint8_t& value : values) {
    if (value == net::unknown_value) value = 0;
  }
  return values;
}

bool assign_initial_values(net::Stg& stg, std::size_t max_states) {
  const StateGraph<net::Stg> graph = explore(stg, max_states);
  if (graph.outcome != Exploration::complete) return false;
  const auto values = find_initial_values(stg, graph);
  if (!values) return false;
  for (const auto& signal : stg.signals) {
    if (!signal->is_dummy()) signal->initial_value = (*values)[signal->index];
  }
  return true;
}

Values code_of(const StateGraph<net::Stg>::State& state, const Values& initial) {
  assert(initial.size() == state.parity.size());
  Values code = initial;
  for (std::size_t i = 0; i < code.size(); ++i) {
    if (state.parity[i]) code[i] = code[i] == 0 ? 1 : 0;
  }
  return code;
}

std::map<std::uint32_t, std::size_t> after_dummies(const StateGraph<net::Stg>& graph,
                                                   std::uint32_t state) {
  std::map<std::uint32_t, std::size_t> steps{{state, 0}};
  std::vector<std::uint32_t> open{state};
  for (std::size_t i = 0; i < open.size(); ++i) {
    const std::size_t next = steps[open[i]] + 1;
    for (const auto& arc : graph.states[open[i]].arcs)
      if (arc.transition->signal->is_dummy() && steps.emplace(arc.target, next).second)
        open.push_back(arc.target);
  }
  return steps;
}

SignalSet enabled_through_dummies(const StateGraph<net::Stg>& graph, std::uint32_t state) {
  SignalSet signals;
  for (const auto& [later, steps] : after_dummies(graph, state)) {
    for (const auto& arc : graph.states[later].arcs) {
      if (!arc.transition->signal->is_dummy()) signals.insert(arc.transition->signal->index);
    }
  }
  return signals;
}

std::map<SignalPair, std::size_t> shortest_disablings(const StateGraph<net::Stg>& graph) {
  std::map<SignalPair, std::size_t> lengths;
  std::vector<SignalSet> enabled;
  for (std::uint32_t i = 0; i < graph.states.size(); ++i) {
    enabled.push_back(enabled_through_dummies(graph, i));
  }
  for (std::uint32_t state = 0; state < graph.states.size(); ++state) {
    for (const auto& [later, steps] : after_dummies(graph, state)) {
      const std::size_t length = graph.states[state].distance + steps + 1;
      for (const auto& arc : graph.states[later].arcs) {
        const net::Signal& by = *arc.transition->signal;
        if (by.is_dummy()) continue;
        for (const std::uint32_t signal : enabled[state]) {
          if (signal == by.index || enabled[arc.target].contains(signal)) continue;
          std::size_t& least = lengths.try_emplace({signal, by.index}, length).first->second;
          least = std::min(least, length);
        }
      }
    }
  }
  return lengths;
}

std::set<SignalPair> disabled_signals(const net::Stg& stg, const StateGraph<net::Stg>& graph) {
  std::set<SignalPair> pairs;
  for (const auto& [pair, length] : shortest_disablings(graph)) {
    if (pair.first >= stg.inputs_end) pairs.insert(pair);
  }
  return pairs;
}

SignalSet signals_that_dummies_disable(const StateGraph<net::Stg>& graph) {
  SignalSet signals;
  for (std::uint32_t state = 0; state < graph.states.size(); ++state) {
    const SignalSet before = enabled_through_dummies(graph, state);
    for (const auto& arc : graph.states[state].arcs) {
      if (!arc.transition->signal->is_dummy()) continue;
      const SignalSet after = enabled_through_dummies(graph, arc.target);
      std::ranges::set_difference(before, after, std::inserter(signals, signals.end()));
    }
  }
  return signals;
}

SignalSet csc_conflict_signals(const net::Stg& stg, const StateGraph<net::Stg>& graph,
                               const Values& initial) {
  std::map<Values, std::vector<SignalSet>> enabled_at;
  for (std::uint32_t i = 0; i < graph.states.size(); ++i) {
    enabled_at[code_of(graph.states[i], initial)].push_back(enabled_through_dummies(graph, i));
  }
  SignalSet conflicts;
  for (const auto& [code, sets] : enabled_at) {
    for (std::uint32_t signal = stg.inputs_end; signal < stg.internals_end; ++signal) {
      for (const SignalSet& set : sets) {
        if (set.contains(signal) != sets.front().contains(signal)) conflicts.insert(signal);
      }
    }
  }
  return conflicts;
}

Normalcy normalcy_of(const StateGraph<net::Stg>& graph, const Values& initial,
                     std::uint32_t signal) {
  // One pair of a code and a next value stands for all states that have both.
  std::set<std::pair<Values, bool>> pairs;
  for (std::uint32_t i = 0; i < graph.states.size(); ++i) {
    const Values code = code_of(graph.states[i], initial);
    pairs.emplace(code, next_value(graph, i, code, signal));
  }
  Normalcy result;
  for (const auto& [small, next_of_small] : pairs) {
    for (const auto& [large, next_of_large] : pairs) {
      if (!covers(large, small)) continue;
      if (next_of_small && !next_of_large) result.p = false;
      if (!next_of_small && next_of_large) result.n = false;
    }
  }
  return result;
}

}  // namespace vorel::oracle
