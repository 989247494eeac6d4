#include "flow/stg_checks.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

#include "base/messages.h"
#include "flow/stg_game.h"
#include "flow/stg_states.h"

namespace vorel::flow {
namespace {

using net::StgPlace;
using net::StgTransition;
using verify::PlaceSet;
using When = StgStates::When;

std::string text_of(const net::Signal& signal) {
  constexpr const char* kinds[] = {"input ", "output ", "internal signal ", "dummy "};
  return kinds[static_cast<std::size_t>(signal.kind)] + signal.name;
}

// Some token that it needs may be taken by another transition.
bool can_be_disabled(const StgTransition& transition) {
  return std::ranges::any_of(transition.preset,
                             [](const StgPlace* place) { return place->postset.size() > 1; });
}

class StgCheck {
 public:
  StgCheck(const net::StgPrefix& prefix, const sat::CnfParams& params)
      : prefix_{prefix},
        structure_{prefix},
        presets_{
            verify::edge_presets(prefix, [](const auto& signal) { return signal.is_dummy(); })},
        lost_to_dummies_{find_lost_to_dummies()},
        states_{structure_, params,
                std::ranges::find(lost_to_dummies_, true) != lost_to_dummies_.end()} {}

  std::vector<StgFinding> run() {
    find_dead();
    find_deadlock();
    if (presets_)
      find_disabled();
    else
      base::print_warning(
          "too many dummies side by side lead to one edge; which signals are disabled is not "
          "known");
    const auto gravity_and_kind = [](const StgFinding& finding) {
      return std::pair(-static_cast<int>(finding.gravity), finding.kind);
    };
    std::ranges::stable_sort(findings_, {}, gravity_and_kind);
    return std::move(findings_);
  }

 private:
  // An edge of the taker that can fire, and the loser cannot change after it.
  struct Way {
    const StgTransition* edge;
    sat::Lit happens;
  };

  bool has_events(const StgTransition& transition) const {
    return !structure_.instances().events_of(base::id_of(transition)).empty();
  }

  // Whether dummies may take from a signal, before the edge of another comes, what it needs. Where
  // no dummy can be disabled each of them only brings edges nearer, and one state tells all.
  base::IndexedBy<net::Signal, bool> find_lost_to_dummies() const {
    base::IndexedBy<net::Signal, bool> lost(prefix_.signals.size());
    base::IndexedBy<StgPlace, bool> contested(prefix_.places.size());
    for (const auto& transition : prefix_.transitions) {
      if (!transition->signal->is_dummy() || !can_be_disabled(*transition)) continue;
      for (const StgPlace* place : transition->preset)
        if (place->postset.size() > 1) contested[*place] = true;
    }
    const auto is_contested = [&](const PlaceSet& set) {
      return std::ranges::any_of(set, [&](std::uint32_t place) { return contested.at(place); });
    };
    for (const net::SignalId signal : prefix_.visible_signals())
      if (presets_) lost[signal] = std::ranges::any_of((*presets_)[signal.value], is_contested);
    return lost;
  }

  void find_dead() {
    base::IndexedBy<net::Signal, bool> lives(prefix_.signals.size());
    for (const auto& transition : prefix_.transitions) {
      if (has_events(*transition))
        lives[*transition->signal] = true;
      else
        add(FindingKind::dead_transition, {transition->name},
            "transition " + transition->name + " never fires");
    }
    for (const net::SignalId id : prefix_.visible_signals()) {
      const net::Signal& signal = base::element(prefix_.signals, id);
      if (!lives[signal])
        add(FindingKind::dead_signal, {signal.name}, text_of(signal) + " never changes");
    }
  }

  void find_deadlock() {
    sat::Lits enabled;
    for (const auto& transition : prefix_.transitions)
      enabled.push_back(states_.enabled(*transition));
    StgTrace trace;
    const auto record = [&] { trace = trace_of(prefix_, transitions_of_model()); };
    if (states_.find_shortest(~states_.any_of(enabled), record))
      add(FindingKind::deadlock, {}, "there is a deadlock: a state in which nothing can fire",
          std::move(trace));
  }

  void find_disabled() {
    for (const net::SignalId loser : prefix_.visible_signals()) {
      for (const net::SignalId taker : prefix_.visible_signals()) {
        const bool is_choice_of_environment =
            loser.value < prefix_.inputs_end && taker.value < prefix_.inputs_end;
        if (loser != taker && !is_choice_of_environment) find_disabled_by(loser, taker);
      }
    }
  }

  void find_disabled_by(net::SignalId loser, net::SignalId taker) {
    std::vector<Way> ways;
    sat::Lits happen;
    for (const StgTransition* edge : structure_.instances().transitions_of(taker)) {
      const sat::Lit happens = disabling(loser, *edge);
      if (happens == sat::LitFalse) continue;
      ways.push_back({edge, happens});
      happen.push_back(happens);
    }
    if (ways.empty()) return;
    std::vector<const StgTransition*> shortest;
    std::size_t length_before = 0;
    const auto record = [&] {
      const auto way =
          std::ranges::find_if(ways, [this](const Way& w) { return states_.is_true(w.happens); });
      assert(way != ways.end());
      shortest = transitions_of_model();
      shortest.push_back(way->edge);
      length_before = states_.length_before();
    };
    if (!states_.find_shortest(states_.any_of(happen), record)) return;
    assert(is_disabling(loser, length_before, shortest));
    add_disabled(loser, taker, trace_of(prefix_, shortest));
  }

  // The loser can change, and cannot any more once the edge has fired.
  sat::Lit disabling(net::SignalId loser, const StgTransition& edge) {
    PlaceSet preset, postset;
    for (const StgPlace* place : edge.preset) preset.push_back(place->index);
    for (const StgPlace* place : edge.postset) postset.push_back(place->index);
    const std::vector<PlaceSet>& sets = (*presets_)[loser.value];
    std::vector<PlaceSet> left;
    for (const PlaceSet& set : sets) {
      PlaceSet rest, taken;
      std::ranges::set_difference(set, postset, std::back_inserter(rest));
      std::ranges::set_intersection(rest, preset, std::back_inserter(taken));
      if (taken.empty()) left.push_back(std::move(rest));
    }
    const bool by_dummies = lost_to_dummies_[loser];
    if (left.size() == sets.size() && !by_dummies) return sat::LitFalse;
    const sat::Lit fires = states_.enabled(edge);
    if (fires == sat::LitFalse) return sat::LitFalse;
    return states_.all_of({fires, states_.any_marked(sets, by_dummies ? When::before : When::now),
                           ~states_.any_marked(left, When::now)});
  }

  [[maybe_unused]] bool is_disabling(net::SignalId loser, std::size_t length_before,
                                     const std::vector<const StgTransition*>& trace) const {
    const net::Signal& signal = base::element(prefix_.signals, loser);
    StgGame game(prefix_);
    bool could_change = false;
    for (std::size_t i = 0; i < trace.size(); ++i) {
      if (i >= length_before || i + 1 == trace.size())
        could_change = could_change || game.can_change(signal);
      if (i >= length_before && i + 1 < trace.size() && !trace[i]->signal->is_dummy()) return false;
      if (!game.is_enabled(*trace[i]) || game.fire(*trace[i]) != nullptr) return false;
    }
    return could_change && !game.can_change(signal);
  }

  std::vector<const StgTransition*> transitions_of_model() const {
    std::vector<const StgTransition*> transitions;
    for (const auto* event : states_.trace()) transitions.push_back(event->transition);
    return transitions;
  }

  void add_disabled(net::SignalId loser_id, net::SignalId taker_id, StgTrace trace) {
    const net::Signal& loser = base::element(prefix_.signals, loser_id);
    const net::Signal& taker = base::element(prefix_.signals, taker_id);
    const std::string text = text_of(loser) + " is disabled by " + text_of(taker);
    std::vector<std::string> subjects{loser.name, taker.name};
    if (loser.kind == net::SignalKind::input)
      add(FindingKind::input_held_back, std::move(subjects),
          text + ": the circuit would have to hold it back", std::move(trace));
    else if (taker.kind == net::SignalKind::input)
      add(FindingKind::not_persistent, std::move(subjects), text + " before it has changed",
          std::move(trace));
    else
      add(FindingKind::arbitration, std::move(subjects), text + ": an arbiter of the STG's own",
          std::move(trace));
  }

  void add(FindingKind kind, std::vector<std::string> subjects, std::string message,
           std::optional<StgTrace> trace = {}) {
    const Gravity gravity = kind == FindingKind::not_persistent ? Gravity::fault : Gravity::warning;
    findings_.push_back({kind, gravity, std::move(subjects), std::move(message), std::move(trace)});
  }

  const net::StgPrefix& prefix_;
  const configuration::StateStructure<net::StgPrefix> structure_;
  const std::optional<verify::EdgePresets> presets_;
  const base::IndexedBy<net::Signal, bool> lost_to_dummies_;
  StgStates states_;
  std::vector<StgFinding> findings_;
};

}  // namespace

std::vector<StgFinding> check_stg(const net::StgPrefix& prefix, const sat::CnfParams& formula) {
  return StgCheck(prefix, formula).run();
}

}  // namespace vorel::flow
