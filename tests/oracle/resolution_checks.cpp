#include "oracle/resolution_checks.h"

#include <algorithm>
#include <bitset>
#include <cassert>
#include <map>
#include <set>
#include <utility>

#include "oracle/coding.h"

namespace vorel::oracle {
namespace {

using Graph = StateGraph<net::Stg>;
using net::StgTransition;

// A transition system over the transitions of the STG before.
struct Arc {
  const StgTransition* label;  // null for a new signal
  std::uint32_t target;
};
using System = std::vector<std::vector<Arc>>;

constexpr std::size_t max_transitions = 512;
using Labels = std::bitset<max_transitions>;

// For each state the labels found after going along some of the arcs.
template <class IsFound, class IsPassed>
std::vector<Labels> gather(const System& system, IsFound is_found, IsPassed is_passed) {
  std::vector<Labels> result(system.size());
  for (bool changed = true; changed;) {
    changed = false;
    for (std::size_t state = system.size(); state-- > 0;) {
      const Labels old = result[state];
      for (const auto& [label, target] : system[state]) {
        if (is_found(label)) result[state].set(label->index);
        if (is_passed(label)) result[state] |= result[target];
      }
      changed |= result[state] != old;
    }
  }
  return result;
}

bool is_new(const StgTransition* label) { return label == nullptr; }
bool is_old(const StgTransition* label) { return label != nullptr; }
bool is_dummy(const StgTransition* label) { return is_old(label) && label->signal->is_dummy(); }
bool is_input(const StgTransition* label) {
  return is_old(label) && label->signal->kind == net::SignalKind::input;
}
bool is_any(const StgTransition*) { return true; }

template <class List>
auto by_name(const List& list) {
  std::map<std::string, typename List::value_type::pointer> result;
  for (const auto& element : list) result.emplace(element->name, element.get());
  return result;
}

std::set<std::pair<std::string, std::string>> disabled_names(const net::Stg& stg,
                                                             const Graph& graph) {
  std::set<std::pair<std::string, std::string>> names;
  for (const auto& [signal, by] : disabled_signals(stg, graph)) {
    names.emplace(stg.signals[signal]->name, stg.signals[by]->name);
  }
  return names;
}

class Comparison {
 public:
  Comparison(const net::Stg& before, const net::Stg& after, const ResolutionClaim& claim)
      : before_{before},
        after_{after},
        claim_{claim},
        old_transitions_{by_name(before.transitions)} {
    assert(before.transitions.size() <= max_transitions);
  }

  std::string run(std::size_t max_states) {
    if (std::string fault = label_fault(); !fault.empty()) return fault;
    old_ = explore(before_, max_states);
    now_ = explore(after_, max_states);
    assert(old_.outcome == Exploration::complete);
    if (now_.outcome == Exploration::unsafe) return "the net is not safe";
    if (now_.outcome == Exploration::too_large) return "there are too many states";
    if (std::string fault = code_fault(); !fault.empty()) return fault;
    if (std::string fault = follow(); !fault.empty()) return fault;
    if (has_new_loop()) return "a loop of new signals alone";
    std::string fault = missing("input %s waits", is_input, is_dummy);
    if (!fault.empty()) return fault;
    fault = claim_.reduced ? missing("%s can never happen again", is_old, is_any)
                           : missing("%s cannot follow", is_old, is_new);
    return fault.empty() ? disabling_fault() : fault;
  }

 private:
  bool is_new_signal(const net::Signal& signal) const {
    return std::ranges::count(claim_.new_signals, signal.name) != 0;
  }

  std::string label_fault() const {
    const auto signals = by_name(before_.signals), new_ones = by_name(after_.signals);
    for (const auto& [name, signal] : new_ones) {
      const auto kind = is_new_signal(*signal)   ? net::SignalKind::internal
                        : signals.contains(name) ? signals.at(name)->kind
                                                 : net::SignalKind::dummy;
      if (signal->kind != kind) return "signal " + name + " is of another kind";
    }
    if (new_ones.size() != signals.size() + claim_.new_signals.size())
      return "there are " + std::to_string(new_ones.size()) + " signals";
    std::size_t kept = 0;
    for (const auto& transition : after_.transitions) {
      if (is_new_signal(*transition->signal)) continue;
      const auto old = old_transitions_.find(transition->name);
      if (old == old_transitions_.end()) return "transition " + transition->name + " is new";
      if (old->second->signal->name != transition->signal->name ||
          old->second->sign != transition->sign)
        return "transition " + transition->name + " has another label";
      ++kept;
    }
    return kept == before_.transitions.size() ? "" : "a transition is missing";
  }

  std::string code_fault() const {
    const auto was = find_initial_values(before_, old_), now = find_initial_values(after_, now_);
    assert(was && "the STG before is consistent");
    if (!now) return "the STG is not consistent";
    const auto signals = by_name(before_.signals);
    for (const auto& signal : after_.signals) {
      const auto old = signals.find(signal->name);
      const auto expected =
          old == signals.end() ? claim_.initial_value : (*was)[old->second->index];
      if (expected && (*now)[signal->index] != expected)
        return signal->name + " starts with another value";
    }
    if (!claim_.resolved) return "";
    SignalSet conflicts = csc_conflict_signals(after_, now_, *now);
    for (const std::uint32_t signal : signals_that_dummies_disable(now_)) conflicts.erase(signal);
    if (conflicts.empty()) return "";
    return "CSC conflict for " + after_.signals[*conflicts.begin()]->name;
  }

  // Both go along the same traces. Transitions with different names make both deterministic but
  // for the new signals, so that the STGs are bisimilar exactly if all these pairs of states are.
  std::string follow() {
    for (const auto& state : old_.states) {
      auto& arcs = old_system_.emplace_back();
      for (const auto& arc : state.arcs) arcs.push_back({arc.transition, arc.target});
    }
    add({0, 0});
    for (std::uint32_t i = 0; i < pairs_.size(); ++i) {
      const auto [old, now] = pairs_[i];
      for (const auto& arc : now_.states[now].arcs) {
        const bool is_hidden = is_new_signal(*arc.transition->signal);
        const auto* label = is_hidden ? nullptr : old_transitions_.at(arc.transition->name);
        std::uint32_t next = old;
        if (!is_hidden) {
          const auto before = std::ranges::find(old_system_[old], label, &Arc::label);
          if (before == old_system_[old].end()) return label->name + " could not happen there";
          next = before->target;
        }
        const std::uint32_t target = add({next, arc.target});
        system_[i].push_back({label, target});
      }
    }
    return "";
  }

  std::string disabling_fault() const {
    std::set<std::string> undecided;
    for (const std::uint32_t signal : signals_that_dummies_disable(now_)) {
      undecided.insert(after_.signals[signal]->name);
    }
    const auto was_disabled = disabled_names(before_, old_);
    for (const auto& [signal, by] : disabled_names(after_, now_)) {
      if (!undecided.contains(signal) && !was_disabled.contains({signal, by}))
        return by + " disables " + signal;
    }
    return "";
  }

  using Pair = std::pair<std::uint32_t, std::uint32_t>;  // states before and after

  std::uint32_t add(const Pair& pair) {
    const auto [known, is_first] =
        numbers_.emplace(pair, static_cast<std::uint32_t>(pairs_.size()));
    const std::uint32_t number = known->second;
    if (is_first) {
      pairs_.push_back(pair);
      system_.emplace_back();
    }
    return number;
  }

  // Whether some states are left when those without steps of new signals go, again and again.
  bool has_new_loop() const {
    std::vector<bool> is_gone(system_.size());
    for (bool changed = true; changed;) {
      changed = false;
      for (std::size_t i = 0; i < system_.size(); ++i) {
        const bool stays = is_gone[i] || std::ranges::any_of(system_[i], [&](const Arc& arc) {
                             return is_new(arc.label) && !is_gone[arc.target];
                           });
        if (!stays) is_gone[i] = changed = true;
      }
    }
    return std::ranges::count(is_gone, false) != 0;
  }

  // What was found before and is not now, in words.
  template <class IsFound, class IsPassed>
  std::string missing(std::string words, IsFound is_found, IsPassed is_passed) const {
    const auto old = gather(old_system_, is_found, is_passed);
    const auto now = gather(system_, is_found, is_passed);
    for (std::size_t i = 0; i < pairs_.size(); ++i) {
      const Labels lost = old[pairs_[i].first] & ~now[i];
      if (lost.none()) continue;
      return words.replace(words.find("%s"), 2, before_.transitions[lost._Find_first()]->name);
    }
    return "";
  }

  const net::Stg& before_;
  const net::Stg& after_;
  const ResolutionClaim& claim_;
  std::map<std::string, StgTransition*> old_transitions_;
  Graph old_, now_;
  System old_system_, system_;
  std::vector<Pair> pairs_;
  std::map<Pair, std::uint32_t> numbers_;
};

}  // namespace

std::string resolution_fault(const net::Stg& before, const net::Stg& after,
                             const ResolutionClaim& claim, std::size_t max_states) {
  return Comparison(before, after, claim).run(max_states);
}

std::vector<std::string> new_signals(const net::Stg& before, const net::Stg& after) {
  const auto old = by_name(before.signals);
  std::vector<std::string> names;
  for (const auto& signal : after.signals)
    if (!old.contains(signal->name)) names.push_back(signal->name);
  return names;
}

std::vector<std::string> conflicting_signals(const net::Stg& stg) {
  const Graph graph = explore(stg);
  const auto initial = find_initial_values(stg, graph);
  assert(initial);
  std::vector<std::string> names;
  for (const std::uint32_t signal : csc_conflict_signals(stg, graph, *initial)) {
    names.push_back(stg.signals[signal]->name);
  }
  return names;
}

}  // namespace vorel::oracle
