#include "oracle/random_stg.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <string>
#include <vector>

#include "oracle/coding.h"
#include "oracle/net_builder.h"
#include "oracle/random.h"
#include "oracle/state_graph.h"

namespace vorel::oracle {
namespace {

constexpr std::size_t least_states = 5;  // fewer are of no interest

struct Edge {
  std::uint32_t signal;
  net::Sign sign;
  auto operator<=>(const Edge&) const = default;
};

struct Arc {
  std::uint32_t from, to;
};

// A state machine whose arcs carry edges; state 0 has the token.
struct Component {
  std::vector<std::uint32_t> signals;
  std::uint32_t state_count = 0;
  std::map<Edge, std::vector<Arc>> arcs;

  // A path between two states, through new states.
  void add_path(std::uint32_t from, std::uint32_t to, const std::vector<Edge>& edges) {
    for (std::size_t i = 0; i < edges.size(); ++i) {
      const std::uint32_t next = i + 1 == edges.size() ? to : state_count++;
      arcs[edges[i]].push_back({from, next});
      from = next;
    }
  }
};

struct SignalPlan {
  std::string name;
  net::SignalKind kind;
  bool starts_at_one;
  bool toggles_only;
};

class StgGenerator {
 public:
  StgGenerator(Random& random, const RandomStgParams& params) : random_{random}, params_{params} {}

  net::Stg run() {
    const std::uint32_t count = random_.between(1, 4);
    for (std::uint32_t i = 0; i < count; ++i) plan_component();
    for (Component& component : components_) fill(component);
    return compose();
  }

 private:
  void plan_component() {
    Component component;
    const std::uint32_t own = random_.between(1, 2);
    for (std::uint32_t i = 0; i < own; ++i) component.signals.push_back(plan_signal());
    if (params_.dummies && random_.chance(70)) component.signals.push_back(plan_dummy());
    if (!components_.empty()) {
      share_signals(component);
    }
    components_.push_back(std::move(component));
  }

  // With one component. Those who share two signals may wait for each other for ever.
  void share_signals(Component& component) {
    std::vector<std::uint32_t> others = components_[random_.below(components_.size())].signals;
    random_.shuffle(others);
    others.resize(std::min<std::size_t>(others.size(), random_.between(0, 2)));
    component.signals.insert(component.signals.end(), others.begin(), others.end());
  }

  std::uint32_t plan_signal() {
    const auto kind =
        signals_.empty() ? net::SignalKind::output : static_cast<net::SignalKind>(random_.below(3));
    const auto number = static_cast<std::uint32_t>(signals_.size());
    // Names of two lengths: the order of names is by length first.
    const std::string name = (random_.chance(30) ? "ack" : "z") + std::to_string(number);
    signals_.push_back({name, kind, random_.chance(30), params_.toggles && random_.chance(40)});
    return number;
  }

  std::uint32_t plan_dummy() {
    const auto number = static_cast<std::uint32_t>(signals_.size());
    signals_.push_back({"dum" + std::to_string(number), net::SignalKind::dummy, false, true});
    return number;
  }

  void fill(Component& component) {
    const std::vector<Edge> cycle = make_cycle(component);
    component.state_count = 1;
    component.add_path(0, 0, cycle);
    // State i lies before edge i of the cycle.
    if (cycle.size() >= 3 && random_.chance(25)) {
      const std::uint32_t from = random_.below(cycle.size() - 2);
      const auto length = random_.between(2, static_cast<std::uint32_t>(cycle.size()) - from - 1);
      const auto first = cycle.begin() + from;
      component.add_path(from, from + length, reorder({first, first + length}));
    }
    if (random_.chance(10)) {
      const std::uint32_t at = random_.below(cycle.size());
      component.add_path(at, at, make_pulse(component, {cycle.begin(), cycle.begin() + at}));
    }
  }

  Edge next_edge(std::uint32_t signal, bool is_one) const {
    if (signals_[signal].toggles_only) return {signal, net::Sign::toggle};
    return {signal, is_one ? net::Sign::minus : net::Sign::plus};
  }

  // Each signal's edges alternate; the signals are interleaved at random.
  std::vector<Edge> make_cycle(const Component& component) {
    std::vector<std::uint32_t> order = component.signals;
    random_.shuffle(order);
    if (random_.chance(60)) {
      // All change in one order, then change back in the same: no two codes are equal.
      order.insert(order.end(), order.begin(), order.end());
      return edges_in_order(order, {});
    }
    order.clear();
    for (const std::uint32_t signal : component.signals) {
      const bool free = signals_[signal].toggles_only;
      const std::uint32_t edges = free ? random_.between(1, 2) : (random_.chance(25) ? 4 : 2);
      order.insert(order.end(), edges, signal);
    }
    random_.shuffle(order);
    return edges_in_order(order, {});
  }

  // The same edges in another order that keeps those of one signal in their order.
  std::vector<Edge> reorder(const std::vector<Edge>& edges) {
    std::map<std::uint32_t, std::vector<Edge>> left;  // by signal, last first
    std::vector<std::uint32_t> order;
    for (auto edge = edges.rbegin(); edge != edges.rend(); ++edge) {
      left[edge->signal].push_back(*edge);
      order.push_back(edge->signal);
    }
    random_.shuffle(order);
    std::vector<Edge> result;
    for (const std::uint32_t signal : order) {
      assert(!left[signal].empty());
      result.push_back(left[signal].back());
      left[signal].pop_back();
    }
    return result;
  }

  // A signal that changes and changes back.
  std::vector<Edge> make_pulse(const Component& component, const std::vector<Edge>& before) {
    const std::uint32_t signal = component.signals[random_.below(component.signals.size())];
    return edges_in_order({signal, signal}, before);
  }

  std::vector<Edge> edges_in_order(const std::vector<std::uint32_t>& order,
                                   const std::vector<Edge>& before) const {
    std::map<std::uint32_t, bool> is_one;
    for (const std::uint32_t signal : order) is_one[signal] = signals_[signal].starts_at_one;
    for (const Edge& edge : before) is_one[edge.signal] = !is_one[edge.signal];
    std::vector<Edge> edges;
    for (const std::uint32_t signal : order) {
      edges.push_back(next_edge(signal, is_one[signal]));
      is_one[signal] = !is_one[signal];
    }
    return edges;
  }

  net::Stg compose() {
    for (const SignalPlan& plan : signals_) {
      built_signals_.push_back(&builder_.add_signal(plan.name, plan.kind));
    }
    for (std::uint32_t i = 0; i < components_.size(); ++i) builder_.mark(place_name(i, 0));
    for (std::uint32_t signal = 0; signal < signals_.size(); ++signal) {
      for (const net::Sign sign : {net::Sign::plus, net::Sign::minus, net::Sign::toggle})
        join({signal, sign});
    }
    return builder_.finish();
  }

  static std::string place_name(std::uint32_t component, std::uint32_t state) {
    return "c" + std::to_string(component) + "s" + std::to_string(state);
  }

  // Components that share a signal move together: one transition for each choice of arcs.
  void join(const Edge& edge) {
    std::vector<std::vector<Arc>> combinations{{}};
    std::vector<std::uint32_t> involved;
    for (std::uint32_t i = 0; i < components_.size(); ++i) {
      const auto arcs = components_[i].arcs.find(edge);
      if (arcs == components_[i].arcs.end()) continue;
      involved.push_back(i);
      std::vector<std::vector<Arc>> longer;
      for (const auto& combination : combinations) {
        for (const Arc& arc : arcs->second) {
          longer.push_back(combination);
          longer.back().push_back(arc);
        }
      }
      combinations = std::move(longer);
    }
    if (involved.empty()) return;
    for (std::uint32_t i = 0; i < combinations.size(); ++i) {
      add_instance(edge, i, involved, combinations[i]);
    }
  }

  void add_instance(const Edge& edge, std::uint32_t number,
                    const std::vector<std::uint32_t>& involved, const std::vector<Arc>& arcs) {
    const SignalPlan& plan = signals_[edge.signal];
    std::string name = plan.name;
    if (plan.kind != net::SignalKind::dummy) name += "+-~"[static_cast<std::size_t>(edge.sign)];
    if (number > 0) name += "/" + std::to_string(number);
    builder_.add_transition(name).label(*built_signals_[edge.signal], edge.sign);
    assert(arcs.size() == involved.size());
    for (std::uint32_t i = 0; i < arcs.size(); ++i) {
      builder_.consume(place_name(involved[i], arcs[i].from));
      builder_.produce(place_name(involved[i], arcs[i].to));
    }
  }

  Random& random_;
  const RandomStgParams& params_;
  std::vector<SignalPlan> signals_;
  std::vector<Component> components_;
  NetBuilder<net::Stg> builder_;
  std::vector<net::Signal*> built_signals_;
};

bool is_good(const net::Stg& stg, const RandomStgParams& params) {
  const StateGraph<net::Stg> graph = explore(stg, params.max_states);
  return graph.outcome == Exploration::complete && graph.states.size() >= least_states &&
         find_initial_values(stg, graph).has_value();
}

}  // namespace

net::Stg random_stg(std::uint64_t seed, const RandomStgParams& params) {
  Random random(seed);
  while (true) {
    net::Stg stg = StgGenerator(random, params).run();
    if (is_good(stg, params)) return stg;
  }
}

}  // namespace vorel::oracle
