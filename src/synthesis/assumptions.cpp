#include "synthesis/assumptions.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "base/sort_unique.h"

namespace vorel::synthesis {
namespace {

using Place = net::StgPlace;
using Transition = net::StgTransition;
using TransitionList = std::vector<const Transition*>;
using PlaceList = std::vector<const Place*>;

bool has_arc(const base::PtrList<Place>& places, const Place& place) {
  return std::ranges::find(places, &place) != places.end();
}

// Asks of pairs that compete for a token, in one formula over a state in which the signal is
// excited, that in which the dummies that the other signal needs have fired too (which is the same
// if there are no dummies), and that after the other signal. The last one is a configuration of its
// own that agrees on the places which the signal waits for: what lies behind a cut-off is not in
// the prefix.
class DisablingSearch {
 public:
  DisablingSearch(const configuration::StateStructure<net::StgPrefix>& structure,
                  const configuration::EncodingOptions& options)
      : structure_{structure},
        prefix_{structure.process()},
        before_{prefix_.internals_end < prefix_.signals.size() ? 1u : 0u},
        states_{structure, with_all_states(options), before_ + 2},
        waited_for_(prefix_.places.size()),
        seen_(prefix_.transitions.size()) {
    if (before_ > 0) add_dummies_between();
    collect_takers();
  }

  std::vector<Disabling> run() {
    std::vector<Disabling> found;
    for (const net::SignalId signal : prefix_.driven_signals()) {
      const PlaceList places = mark_waited_for(signal);
      for (const Taker& taker : takers_) {
        const Disabling pair{signal, base::id_of(*taker.transition->signal)};
        if (pair.by == signal || (!found.empty() && found.back() == pair)) continue;
        const bool competes = std::ranges::any_of(
            taker.taken, [this](const Place* place) { return waited_for_.contains(*place); });
        if (competes && can_disable(*taker.transition, signal, places)) found.push_back(pair);
        if (base::run_failed()) return found;
      }
    }
    return found;
  }

 private:
  // A transition that can fire, and what it and the dummies before it take for good.
  struct Taker {
    const Transition* transition;
    PlaceList taken;
  };

  static configuration::EncodingOptions with_all_states(configuration::EncodingOptions options) {
    options.no_max_dummies = false;
    return options;
  }

  void add_dummies_between() {
    for (const auto& event : prefix_.events) {
      const sat::Lit first = states_.state(0).vars().event_lit(*event);
      const sat::Lit later = states_.state(before_).vars().event_lit(*event);
      states_.formula().add_binary(~first, later, sat::PermanentGroup);
      if (!net::is_dummy(*event)) {
        states_.formula().add_binary(first, ~later, sat::PermanentGroup);
      }
    }
  }

  // By signal.
  void collect_takers() {
    for (const net::SignalId signal : prefix_.visible_signals()) {
      for (const Transition* transition : structure_.instances().transitions_of(signal)) {
        if (structure_.instances().events_of(base::id_of(*transition)).empty()) continue;
        Taker taker{transition, {}};
        for (const Transition* one : with_dummies_before({&transition, 1})) {
          for (const Place* place : one->preset) {
            if (!has_arc(one->postset, *place)) taker.taken.push_back(place);
          }
        }
        base::sort_unique(taker.taken, &Place::index);
        takers_.push_back(std::move(taker));
      }
    }
  }

  // The transitions, and the dummies that one of them may wait for.
  TransitionList with_dummies_before(std::span<const Transition* const> transitions) {
    seen_.clear();
    TransitionList list(transitions.begin(), transitions.end());
    for (std::size_t i = 0; i < list.size(); ++i) {
      for (const Place* place : list[i]->preset) {
        for (const Transition* producer : place->preset) {
          if (producer->signal->is_dummy() && seen_.insert(*producer)) list.push_back(producer);
        }
      }
    }
    return list;
  }

  PlaceList mark_waited_for(net::SignalId signal) {
    waited_for_.clear();
    PlaceList places;
    for (const Transition* transition :
         with_dummies_before(structure_.instances().transitions_of(signal))) {
      for (const Place* place : transition->preset) {
        if (waited_for_.insert(*place)) places.push_back(place);
      }
    }
    return places;
  }

  bool can_disable(const Transition& taker, net::SignalId signal, const PlaceList& waited_for) {
    assert(taker.signal->index != signal.value && prefix_.driven_signals().contains(signal));
    sat::CnfFormula& formula = states_.formula();
    auto& before = states_.state(before_);
    auto& after = states_.state(before_ + 1);
    const sat::ClauseGroup group = formula.new_group();
    formula.add_unit(states_.state(0).excited(signal), group);
    for (const Place* place : taker.preset) formula.add_unit(before.marked(*place), group);
    for (const Place* place : waited_for) {
      const sat::Lit marked = after.marked(*place);
      if (has_arc(taker.postset, *place)) {
        formula.add_unit(marked, group);
      } else if (has_arc(taker.preset, *place)) {
        formula.add_unit(~marked, group);
      } else {
        formula.add_binary(marked, ~before.marked(*place), group);
        formula.add_binary(~marked, before.marked(*place), group);
      }
    }
    formula.add_unit(~after.excited(signal), group);
    if (before_ > 0) exclude_needless_dummies(taker, group);
    const bool is_found = formula.solve();
    formula.remove_group(group);
    return is_found;
  }

  // A dummy that has fired in between leads to the transition, or to another one that has.
  void exclude_needless_dummies(const Transition& taker, sat::ClauseGroup group) {
    auto& first = states_.state(0).vars();
    auto& before = states_.state(before_).vars();
    for (const auto& event : prefix_.events) {
      if (!net::is_dummy(*event)) continue;
      sat::Lits clause{~before.event_lit(*event), first.event_lit(*event)};
      for (const auto* condition : event->postset) {
        if (has_arc(taker.preset, *condition->place)) clause.push_back(sat::LitTrue);
        for (const auto* consumer : condition->postset) {
          clause.push_back(before.event_lit(*consumer));
        }
      }
      states_.formula().add_clause(clause, group);
    }
  }

  const configuration::StateStructure<net::StgPrefix>& structure_;
  const net::StgPrefix& prefix_;
  const std::uint32_t before_;  // the number of the state in which the other signal can fire
  configuration::StateFormula states_;
  std::vector<Taker> takers_;
  base::MarkSet<Place> waited_for_;
  base::MarkSet<Transition> seen_;  // scratch
};

std::string text_of(const net::Signal& signal) {
  constexpr std::string_view kinds[net::signal_kind_count] = {"input", "output", "internal signal",
                                                              "dummy"};
  return std::string(kinds[static_cast<std::size_t>(signal.kind)]) + ' ' + signal.name;
}

}  // namespace

std::vector<Disabling> find_disablings(
    const configuration::StateStructure<net::StgPrefix>& structure,
    const configuration::EncodingOptions& options) {
  return DisablingSearch(structure, options).run();
}

SignalList dead_signals(const configuration::StateStructure<net::StgPrefix>& structure) {
  SignalList signals;
  for (const net::SignalId signal : structure.process().driven_signals()) {
    if (structure.instances().events_of(signal).empty()) signals.push_back(signal);
  }
  return signals;
}

void print_broken_assumptions(std::ostream& stream,
                              const configuration::StateStructure<net::StgPrefix>& structure,
                              const configuration::EncodingOptions& options) {
  const auto name = [&structure](net::SignalId signal) {
    return text_of(base::element(structure.process().signals, signal));
  };
  for (const Disabling& pair : find_disablings(structure, options)) {
    stream << '\n' << name(pair.by) << " can disable " << name(pair.signal) << ", a hazard";
  }
  for (const net::SignalId signal : dead_signals(structure)) {
    stream << '\n' << name(signal) << " never changes, and becomes a constant";
  }
  stream << std::flush;
}

}  // namespace vorel::synthesis
