#include "oracle/circuit_states.h"

#include <algorithm>
#include <map>
#include <optional>

#include "support/logic_values.h"

namespace vorel::oracle {
namespace {

using Graph = StateGraph<net::Stg>;

struct CircuitState {
  std::uint32_t environment;  // state of the graph
  std::vector<bool> gates;    // SET and RESET of each signal in turn
  auto operator<=>(const CircuitState&) const = default;
};

class Explorer {
 public:
  Explorer(const net::Stg& stg, const Graph& graph, const Values& initial,
           const std::vector<const synthesis::SignalSolution*>& solutions)
      : stg_{stg}, graph_{graph}, solutions_{solutions} {
    for (const auto& state : graph.states) codes_.push_back(code_of(state, initial));
  }

  std::string run() {
    if (!disabled_signals(stg_, graph_).empty()) return "";
    CircuitState first{0, std::vector<bool>(solutions_.size())};
    for (std::size_t g = 0; g < solutions_.size(); ++g) first.gates[g] = function(g, 0);
    std::set<CircuitState> seen{first};
    std::vector<CircuitState> open{first};
    constexpr std::size_t max_states = 20'000;
    while (!open.empty() && seen.size() < max_states) {
      const CircuitState state = open.back();
      open.pop_back();
      for (const auto& [what, next] : moves(state)) {
        if (!next) return what + " happens where the STG does not allow it";
        const std::string victim = disabled_by(state, *next, what);
        if (!victim.empty()) return victim + " is disabled by " + what;
        if (seen.insert(*next).second) open.push_back(*next);
      }
      const std::string late = missing_output(state);
      if (!late.empty()) return late + " never comes";
    }
    return "";
  }

 private:
  using Move = std::pair<std::string, std::optional<CircuitState>>;  // none: not allowed

  std::uint32_t signal_of(std::size_t pair) const {
    return stg_.inputs_end + static_cast<std::uint32_t>(pair);
  }
  std::size_t pairs() const { return solutions_.size() / 2; }

  bool function(std::size_t gate, std::uint32_t environment) const {
    return value_of(solutions_[gate]->best().equation, stg_, codes_[environment]);
  }

  // The next value of a C-element with its second input inverted.
  bool driven(const CircuitState& state, std::size_t pair) const {
    const bool set = state.gates[2 * pair], hold = !state.gates[2 * pair + 1];
    const bool now = codes_[state.environment][signal_of(pair)] != 0;
    return (set && hold) || (now && (set || hold));
  }

  // All that can happen next: gates, C-elements, inputs.
  std::vector<Move> moves(const CircuitState& state) const {
    std::vector<Move> result;
    for (std::size_t g = 0; g < solutions_.size(); ++g) {
      if (function(g, state.environment) == state.gates[g]) continue;
      CircuitState next = state;
      next.gates[g] = !next.gates[g];
      result.emplace_back("gate " + solutions_[g]->name(), next);
    }
    for (std::size_t p = 0; p < pairs(); ++p) {
      const bool now = codes_[state.environment][signal_of(p)] != 0;
      if (driven(state, p) == now) continue;
      std::optional<CircuitState> next;
      for (const auto& arc : graph_.states[state.environment].arcs) {
        if (arc.transition->signal->index == signal_of(p)) next = {arc.target, state.gates};
      }
      result.emplace_back("output " + stg_.signals[signal_of(p)]->name, next);
    }
    for (const auto& arc : graph_.states[state.environment].arcs) {
      if (arc.transition->signal->kind != net::SignalKind::input) continue;
      result.emplace_back("input " + arc.transition->name, CircuitState{arc.target, state.gates});
    }
    return result;
  }

  // What was excited before another move and is not after it.
  std::string disabled_by(const CircuitState& before, const CircuitState& after,
                          const std::string& move) const {
    const std::vector<Move> still = moves(after);
    for (const auto& [what, next] : moves(before)) {
      const bool is_input = what.starts_with("input");
      const auto same = [&what](const Move& other) { return other.first == what; };
      if (what != move && !is_input && std::ranges::none_of(still, same)) return what;
    }
    return "";
  }

  // An output that the STG waits for when all gates are at rest, and that is not driven.
  std::string missing_output(const CircuitState& state) const {
    for (std::size_t g = 0; g < solutions_.size(); ++g) {
      if (function(g, state.environment) != state.gates[g]) return "";
    }
    for (const auto& arc : graph_.states[state.environment].arcs) {
      const std::uint32_t signal = arc.transition->signal->index;
      if (arc.transition->signal->kind == net::SignalKind::input) continue;
      const bool now = codes_[state.environment][signal] != 0;
      if (driven(state, signal - stg_.inputs_end) == now) return arc.transition->name;
    }
    return "";
  }

  const net::Stg& stg_;
  const Graph& graph_;
  const std::vector<const synthesis::SignalSolution*>& solutions_;
  std::vector<Values> codes_;  // by state of the graph
};

template <class Visit>
void for_each_operand(const toolkit::LogicExpr& expression, Visit visit) {
  if (const auto* both = std::get_if<toolkit::LogicExpr::And>(&expression.node)) {
    std::ranges::for_each(both->operands, visit);
  } else if (const auto* either = std::get_if<toolkit::LogicExpr::Or>(&expression.node)) {
    std::ranges::for_each(either->operands, visit);
  }
}

}  // namespace

std::set<std::string> names_in(const toolkit::LogicExpr& expression) {
  if (const auto* leaf = std::get_if<toolkit::LogicExpr::Literal>(&expression.node))
    return {leaf->name};
  std::set<std::string> names;
  for_each_operand(expression,
                   [&names](const toolkit::LogicExpr& operand) { names.merge(names_in(operand)); });
  return names;
}

bool value_of(const toolkit::LogicExpr& expression, const net::Stg& stg, const Values& code) {
  return support::value_of(expression, [&](const std::string& name) {
    const auto signal = std::ranges::find(
        stg.signals, name, [](const auto& s) -> const auto& { return s->name; });
    return code[(*signal)->index] != 0;
  });
}

std::string find_hazard(const net::Stg& stg, const Graph& graph, const Values& initial,
                        const std::vector<const synthesis::SignalSolution*>& solutions) {
  return Explorer(stg, graph, initial, solutions).run();
}

}  // namespace vorel::oracle
