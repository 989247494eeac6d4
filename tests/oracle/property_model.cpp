#include "oracle/property_model.h"

#include <algorithm>
#include <map>

namespace vorel::oracle {
namespace {

template <class List>
Nodes numbers_of(const List& list) {
  Nodes numbers;
  for (const auto* element : list) numbers.insert(std::int64_t{element->index} + 1);
  return numbers;
}

bool is_dummy(const net::Transition&) { return false; }
bool is_dummy(const net::StgTransition& transition) { return transition.signal->is_dummy(); }

// Markings and edges that dummies alone lead to, the first among them.
template <class N>
std::set<Marking> closure(const N& net, const Marking& start, StateKind kind) {
  std::set<Marking> seen{start};
  std::vector<Marking> open{start};
  while (!open.empty() && kind == StateKind::no_dummies) {
    const Marking current = open.back();
    open.pop_back();
    for (const auto& t : net.transitions) {
      if (!is_dummy(*t) || !is_enabled(current, *t)) continue;
      const Marking next = fire(current, *t).value();
      if (seen.insert(next).second) open.push_back(next);
    }
  }
  return seen;
}

template <class N>
PropertyState state_at(const N& net, const Marking& marking, const Parity& parity, StateKind kind,
                       std::uint32_t distance) {
  PropertyState state{.holds = {}, .enabled = {}, .distance = distance};
  state.holds[place] = marking;
  const std::set<Marking> markings = closure(net, marking, kind);
  if constexpr (N::has_signals) state.enabled[signal].resize(net.signals.size());
  for (const auto& t : net.transitions) {
    const bool is_on = std::ranges::any_of(markings, [&](const Marking& m) {  //
      return is_enabled(m, *t);
    });
    state.enabled[transition].push_back(is_on);
    if constexpr (N::has_signals) {
      if (is_on) state.enabled[signal][t->signal->index] = true;
    }
  }
  if constexpr (N::has_signals) {
    for (const auto& s : net.signals) {
      state.holds[signal].push_back((s->initial_value == 1) != parity[s->index]);
    }
  }
  return state;
}

// A state of a run: its dummies that are still maximal, each by its outputs.
struct RunState {
  Marking marking;
  Parity parity;
  std::set<Nodes> maximal_dummies;
  auto operator<=>(const RunState&) const = default;
};

template <class T>
RunState after(const RunState& state, const T& t) {
  RunState next{fire(state.marking, t).value(), state.parity, {}};
  count_edge(next.parity, t);
  const Nodes inputs = numbers_of(t.preset), outputs = numbers_of(t.postset);
  for (const Nodes& tokens : state.maximal_dummies) {
    const auto is_consumed = [&](std::int64_t token) { return inputs.contains(token); };
    if (std::ranges::none_of(tokens, is_consumed)) next.maximal_dummies.insert(tokens);
  }
  if (is_dummy(t)) next.maximal_dummies.insert(outputs);
  return next;
}

template <class N>
class Configurations {
 public:
  using State = std::pair<EventNumbers, PropertyState>;

  Configurations(const net::PrefixOf<N>& prefix, StateKind kind) : prefix_{prefix}, kind_{kind} {}

  bool collect(std::size_t most, std::vector<State>& result) {
    std::set<EventNumbers> seen{{}};
    Cut initial;
    for (const auto& c : prefix_.conditions) {
      if (c->is_initial()) initial.insert(c.get());
    }
    std::vector<std::pair<EventNumbers, Cut>> open{{{}, initial}};
    while (!open.empty()) {
      const auto [current, cut] = std::move(open.back());
      open.pop_back();
      if (kind_ == StateKind::all || !ends_in_a_dummy(current, cut)) {
        result.emplace_back(current, state_after(current, cut));
      }
      for (const auto& event : prefix_.events) {
        if (event->is_cut_off() || !can_follow(*event, cut)) continue;
        EventNumbers next = current;
        next.insert(event->index);
        if (seen.insert(next).second) open.emplace_back(next, after(cut, *event));
      }
      if (result.size() > most) return false;
    }
    return true;
  }

 private:
  using Event = net::EventOf<N>;
  using Cut = std::set<const net::ConditionOf<N>*>;

  static bool can_follow(const Event& event, const Cut& cut) {
    return std::ranges::all_of(event.preset, [&](const auto* c) { return cut.contains(c); });
  }

  static Cut after(Cut cut, const Event& event) {
    for (const auto* c : event.preset) cut.erase(c);
    cut.insert(event.postset.begin(), event.postset.end());
    return cut;
  }

  bool ends_in_a_dummy(const EventNumbers& configuration, const Cut& cut) const {
    return std::ranges::any_of(configuration, [&](std::uint32_t number) {
      const Event& e = *prefix_.events[number];
      const auto is_left = [&](const auto* c) { return cut.contains(c); };
      return is_dummy(*e.transition) && std::ranges::all_of(e.postset, is_left);
    });
  }

  void mark_enabled(const Cut& cut, std::vector<bool>& enabled) const {
    for (const auto& e : prefix_.events) {
      if (!can_follow(*e, cut)) continue;
      enabled[e->index] = true;
      if (kind_ == StateKind::all || e->is_cut_off() || !is_dummy(*e->transition)) continue;
      mark_enabled(after(cut, *e), enabled);
    }
  }

  PropertyState state_after(const EventNumbers& configuration, const Cut& cut) const {
    Marking marking(prefix_.places.size());
    Parity parity = initial_parity<N>(prefix_);
    for (const auto* c : cut) marking[c->place->index] = true;
    for (const auto number : configuration) count_edge(parity, *prefix_.events[number]->transition);
    PropertyState state = state_at<N>(prefix_, marking, parity, kind_,
                                      static_cast<std::uint32_t>(configuration.size()));
    for (const auto& c : prefix_.conditions) {
      state.holds[condition].push_back(cut.contains(c.get()));
    }
    for (const auto& e : prefix_.events) {
      state.holds[event].push_back(configuration.contains(e->index));
    }
    state.enabled[event].resize(prefix_.events.size());
    mark_enabled(cut, state.enabled[event]);
    return state;
  }

  const net::PrefixOf<N>& prefix_;
  const StateKind kind_;
};

}  // namespace

template <class N>
ProcessModel model_of(const net::PrefixOf<N>& prefix) {
  ProcessModel model{.has_signals = N::has_signals, .nodes = {}};
  const auto number = [](const auto* element) { return std::int64_t{element->index} + 1; };
  for (const auto& p : prefix.places) {
    model.nodes[place].push_back({.name = p->name,
                                  .pre = numbers_of(p->preset),
                                  .post = numbers_of(p->postset),
                                  .is_init = p->initial_marking != 0});
  }
  for (const auto& t : prefix.transitions) {
    NodeFacts facts{.name = t->name, .pre = numbers_of(t->preset), .post = numbers_of(t->postset)};
    facts.is_init = std::ranges::all_of(
        facts.pre, [&](std::int64_t input) { return model.at(place, input).is_init; });
    if constexpr (N::has_signals) {
      facts.origin = number(t->signal);
      facts.sign = t->sign;
    }
    model.nodes[transition].push_back(facts);
  }
  for (const auto& c : prefix.conditions) {
    model.nodes[condition].push_back({.pre = numbers_of(c->producers()),
                                      .post = numbers_of(c->postset),
                                      .origin = number(c->place),
                                      .is_init = c->is_initial()});
  }
  for (const auto& e : prefix.events) {
    NodeFacts facts = model.at(transition, number(e->transition));
    facts = {.pre = numbers_of(e->preset),
             .post = numbers_of(e->postset),
             .origin = number(e->transition),
             .is_cutoff = e->is_cut_off(),
             .sign = facts.sign};
    facts.is_init = std::ranges::all_of(
        facts.pre, [&](std::int64_t input) { return model.at(condition, input).is_init; });
    model.nodes[event].push_back(facts);
  }
  if constexpr (N::has_signals) {
    for (const auto& s : prefix.signals) {
      model.nodes[signal].push_back(
          {.name = s->name, .is_init = s->initial_value == 1, .kind = s->kind});
    }
  }
  return model;
}

template <class N>
std::vector<PropertyState> states_of(const N& net, StateKind kind) {
  std::vector<PropertyState> states;
  std::map<RunState, std::uint32_t> distances;
  std::vector<RunState> open{{initial_marking(net), initial_parity(net), {}}};
  distances.emplace(open.front(), 0);
  for (std::size_t i = 0; i < open.size(); ++i) {
    const RunState current = open[i];
    const std::uint32_t distance = distances.at(current);
    if (kind == StateKind::all || current.maximal_dummies.empty()) {
      states.push_back(state_at(net, current.marking, current.parity, kind, distance));
    }
    for (const auto& t : net.transitions) {
      if (!is_enabled(current.marking, *t)) continue;
      RunState next = after(current, *t);
      if (kind == StateKind::all) next.maximal_dummies.clear();
      if (distances.emplace(next, distance + 1).second) open.push_back(next);
    }
  }
  return states;
}

template <class N>
std::optional<std::vector<std::pair<EventNumbers, PropertyState>>> configuration_states(
    const net::PrefixOf<N>& prefix, StateKind kind, std::size_t most) {
  std::vector<std::pair<EventNumbers, PropertyState>> result;
  if (!Configurations<N>(prefix, kind).collect(most, result)) return {};
  return result;
}

#define INSTANTIATE(N)                                                        \
  template ProcessModel model_of(const net::PrefixOf<N>&);                    \
  template std::vector<PropertyState> states_of(const N&, StateKind);         \
  template std::optional<std::vector<std::pair<EventNumbers, PropertyState>>> \
  configuration_states(const net::PrefixOf<N>&, StateKind, std::size_t);
INSTANTIATE(net::Net)
INSTANTIATE(net::Stg)
#undef INSTANTIATE

}  // namespace vorel::oracle
