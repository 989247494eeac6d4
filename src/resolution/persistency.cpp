#include "resolution/persistency.h"

#include <algorithm>
#include <utility>

#include "base/sort_unique.h"
#include "resolution/candidates.h"
#include "resolution/input_like.h"

namespace vorel::resolution {
namespace {

using Condition = net::StgPrefix::Condition;
using Event = net::StgPrefix::Event;
using Transition = net::StgTransition;
using Events = std::vector<const Event*>;
using Transitions = std::vector<const Transition*>;

bool is_driven(const net::Signal& signal) {
  return signal.kind == net::SignalKind::output || signal.kind == net::SignalKind::internal;
}

// The signal of the event is the given one, or excited behind it where the prefix ends with it.
bool excites(const Event& event, const net::Signal& signal) {
  if (event.transition->signal == &signal) return true;
  if (!net::is_dummy(event) || !event.is_cut_off()) return false;
  return std::ranges::any_of(closure_through_dummies(*event.transition),
                             [&](const Transition* t) { return t->signal == &signal; });
}

// The causes of something that is excited when those of them that are settled have fired.
struct History {
  Events all;      // by index, the event itself included
  Events settled;  // all but the event and the dummies after the last events of signals
  Events open;     // the rest
};

struct Rivalry {
  const Event *loser, *winner;  // they take the same condition
};

class PersistencyCheck {
 public:
  explicit PersistencyCheck(const Candidates& candidates)
      : candidates_{candidates},
        prefix_{candidates.prefix()},
        keeps_(candidates.size(), true),
        leaders_(prefix_.events.size()),
        delayers_(prefix_.transitions.size()),
        may_lose_(prefix_.events.size()),
        first_(prefix_.events.size()),
        second_(prefix_.events.size()),
        behind_(prefix_.events.size()) {
    for (const OccurrenceId id : candidates.all_occurrences())
      for (const auto event : candidates.occurrence(id).followers) leaders_[event].push_back(id);
    for (const CandidateId id : candidates.all())
      for (const Transition* transition : delayed_by(candidates.insertion(id)))
        delayers_[*transition].push_back(id);
    for (const auto& event : prefix_.events) may_lose_[*event] = has_choice_before(*event);
  }

  base::IndexedBy<net::Insertion, bool> run() {
    for (const auto& event : prefix_.events) {
      const bool is_head =
          net::is_dummy(*event) ? event->is_cut_off() : is_driven(*event->transition->signal);
      if (is_head) check_signal(*event);
    }
    for (const OccurrenceId id : candidates_.all_occurrences())
      if (keeps_[candidates_.candidate_of(id)]) check_occurrence(id);
    for (const auto& event : prefix_.events)
      if (net::is_dummy(*event) && event->is_cut_off()) check_occurrences_behind(*event);
    return std::move(keeps_);
  }

 private:
  static Transitions delayed_by(const net::Insertion& insertion) {
    if (const auto* before = std::get_if<net::SeqBefore>(&insertion)) return {before->target};
    if (const auto* both = std::get_if<net::Concurrent>(&insertion)) return {both->target};
    if (const auto* many = std::get_if<net::General>(&insertion)) return many->targets;
    Transitions delayed;
    for (const net::StgPlace* place : std::get<net::SeqAfter>(insertion).places)
      delayed.insert(delayed.end(), place->postset.begin(), place->postset.end());
    base::sort_unique(delayed, &Transition::index);
    return delayed;
  }

  // ---- histories

  // Of the event, or without one of what comes after the causes.
  History history_of(Events causes, const Event* event) {
    History history;
    first_.clear();
    if (event != nullptr) causes.push_back(event);
    for (const Event* cause : causes)
      if (first_.insert(*cause)) history.all.push_back(cause);
    for (std::size_t next = 0; next < history.all.size(); ++next)
      for (const Condition* condition : history.all[next]->preset)
        if (!condition->is_initial() && first_.insert(*condition->pre_event))
          history.all.push_back(condition->pre_event);
    std::ranges::sort(history.all, {}, &Event::index);
    second_.clear();  // what is before an event of a signal
    for (auto at = history.all.rbegin(); at != history.all.rend(); ++at) {
      const bool is_settled = *at != event && (!net::is_dummy(**at) || second_.contains(**at));
      (is_settled ? history.settled : history.open).push_back(*at);
      if (!is_settled) continue;
      for (const Condition* condition : (*at)->preset)
        if (!condition->is_initial()) second_.insert(*condition->pre_event);
    }
    return history;
  }
  History history_of(const Event& event) { return history_of({}, &event); }
  History history_of(OccurrenceId id) {
    Events causes;
    for (const auto cause : candidates_.occurrence(id).causes)
      causes.push_back(&base::element(prefix_.events, cause));
    return history_of(std::move(causes), nullptr);
  }

  bool has_choice_before(const Event& event) const {
    return std::ranges::any_of(event.preset, [this](const Condition* condition) {
      return condition->postset.size() > 1 ||
             (!condition->is_initial() && net::is_dummy(*condition->pre_event) &&
              may_lose_[*condition->pre_event]);
    });
  }
  static std::vector<Rivalry> rivalries_of(const History& history) {
    std::vector<Rivalry> found;
    for (const Event* event : history.open)
      for (const Condition* condition : event->preset)
        for (const Event* rival : condition->postset)
          if (rival != event) found.push_back({event, rival});
    return found;
  }

  static Events without(Events events, const Event& event) {
    std::erase(events, &event);
    return events;
  }

  // Marks the events of the lists; whether no two of them take one condition.
  static bool mark_all(std::initializer_list<const Events*> lists, base::MarkSet<Event>& marks) {
    marks.clear();
    for (const Events* list : lists)
      for (const Event* event : *list) marks.insert(*event);
    const auto has_rival = [&marks](const Event* event) {
      return std::ranges::any_of(event->preset, [&](const Condition* condition) {
        return std::ranges::any_of(condition->postset, [&](const Event* other) {
          return other != event && marks.contains(*other);
        });
      });
    };
    return std::ranges::none_of(
        lists, [&](const Events* list) { return std::ranges::any_of(*list, has_rival); });
  }

  // ---- signals of the STG

  // The event is about to fire, then the other side of a choice does.
  void check_signal(const Event& event) {
    if (!may_lose_[event]) return;
    const History history = history_of(event);
    const std::vector<Rivalry> rivalries = rivalries_of(history);
    const Events next = events_next_to(rivalries);
    for (const auto& signal : prefix_.signals) {
      if (!is_driven(*signal) || !excites(event, *signal)) continue;
      for (const Rivalry& rivalry : rivalries)
        if (rivalry.winner->transition->signal != signal.get())
          check_choice(history, rivalry, *signal, next);
    }
  }

  // What is excited before or after some winner, through dummies.
  static Events events_next_to(const std::vector<Rivalry>& rivalries) {
    Events open, found;
    const auto enter = [](Events& list, const Event* event) {
      if (std::ranges::find(list, event) == list.end()) list.push_back(event);
    };
    for (const Rivalry& rivalry : rivalries) enter(open, rivalry.winner);
    found = open;
    for (std::size_t next = 0; next < open.size(); ++next) {
      for (const Condition* condition : open[next]->postset) {
        for (const Event* event : condition->postset) {
          enter(found, event);
          if (net::is_dummy(*event)) enter(open, event);
        }
      }
    }
    return found;
  }

  void check_choice(const History& lost, const Rivalry& rivalry, const net::Signal& signal,
                    const Events& next) {
    const History made = history_of(*rivalry.winner);
    const Events before = without(made.all, *rivalry.winner);
    if (!mark_all({&lost.all, &before}, first_)) return;
    mark_behind(lost, *rivalry.loser);
    if (rivalry.winner->is_cut_off()) refuse_delayers_behind(*rivalry.winner, signal, lost);
    for (const Event* event : next)
      if (excites(*event, signal)) check_replacement(lost, made, *rivalry.winner, *event, signal);
  }

  // The event excites the signal again once the winner has fired.
  void check_replacement(const History& lost, const History& made, const Event& winner,
                         const Event& event, const net::Signal& signal) {
    const History given = history_of(event);
    const Events settled = without(given.settled, winner);
    const auto needs_winner = [&winner](const Event* other) {
      return std::ranges::any_of(other->preset, [&](const Condition* condition) {
        return condition->pre_event == &winner;
      });
    };
    if (std::ranges::any_of(settled, needs_winner)) return;
    if (!mark_all({&lost.settled, &made.all, &given.all}, first_)) return;
    const Events before = without(made.all, winner);
    if (!mark_all({&lost.all, &before, &settled}, first_)) return;
    assert(!first_.contains(winner) && "it is in conflict with what it wins against");
    first_.insert(winner);
    for (const Event* waiting : given.open)
      if (!first_.contains(*waiting)) refuse_leaders_of(*waiting, lost);
    if (event.is_cut_off() && net::is_dummy(event)) refuse_delayers_behind(event, signal, lost);
  }

  // first_: what has happened, that which has lost its turn included.
  void refuse_leaders_of(const Event& event, const History& lost) {
    for (const OccurrenceId id : leaders_[event])
      if (!has_fired(id)) refuse(candidates_.candidate_of(id), lost);
  }
  bool has_fired(OccurrenceId id) const {
    return std::ranges::any_of(candidates_.occurrence(id).followers,
                               [this](auto event) { return first_.contains(event); });
  }

  // The same by transitions: those after the cut-off through which the signal is excited.
  void refuse_delayers_behind(const Event& cut_off, const net::Signal& signal,
                              const History& lost) {
    const Transitions chain = transitions_behind(*cut_off.transition);
    for (const Transition* transition : chain) {
      const Transitions reached = closure_through_dummies(*transition);
      if (std::ranges::none_of(reached, [&](const auto* t) { return t->signal == &signal; }))
        continue;
      for (const CandidateId id : delayers_[*transition]) {
        if (!has_fired_for_loser(id) ||
            is_made_anew(candidates_.insertion(id), *cut_off.transition, chain))
          refuse(id, lost);
      }
    }
  }
  bool has_fired_for_loser(CandidateId id) const {
    const auto occurrences = candidates_.occurrences_of(id);
    return std::any_of(occurrences.begin(), occurrences.end(), [this](OccurrenceId occurrence) {
      return std::ranges::any_of(candidates_.occurrence(occurrence).followers,
                                 [this](auto event) { return behind_.contains(event); });
    });
  }
  static Transitions transitions_behind(const Transition& transition) {
    Transitions behind;
    for (const net::StgPlace* place : transition.postset) {
      for (const Transition* consumer : place->postset) {
        const Transitions more = closure_through_dummies(*consumer);
        behind.insert(behind.end(), more.begin(), more.end());
      }
    }
    base::sort_unique(behind, &Transition::index);
    return behind;
  }
  static bool is_made_anew(const net::Insertion& insertion, const Transition& first,
                           const Transitions& chain) {
    const auto is_by = [&](const Transition* transition) {
      return transition == &first || std::ranges::count(chain, transition) != 0;
    };
    if (const auto* after = std::get_if<net::SeqAfter>(&insertion)) return is_by(after->source);
    if (const auto* both = std::get_if<net::Concurrent>(&insertion)) return is_by(both->source);
    if (const auto* many = std::get_if<net::General>(&insertion))
      return std::ranges::any_of(many->sources, is_by);
    return std::ranges::any_of(
        std::get<net::SeqBefore>(insertion).places,
        [&](const net::StgPlace* place) { return std::ranges::any_of(place->preset, is_by); });
  }

  // A candidate with an occurrence between the loser and what it leads to delays the excitation
  // until the choice is made.
  void refuse(CandidateId candidate, const History& lost) {
    for (const OccurrenceId id : candidates_.occurrences_of(candidate)) {
      const EdgeOccurrence& occurrence = candidates_.occurrence(id);
      const auto is_behind = [this](auto event) { return behind_.contains(event); };
      const auto is_open = [&](auto event) {
        return std::ranges::count(lost.open, event, [](const Event* e) { return base::id_of(*e); });
      };
      if (std::ranges::any_of(occurrence.causes, is_behind) &&
          std::ranges::any_of(occurrence.followers, is_open))
        return;
    }
    keeps_[candidate] = false;
  }
  void mark_behind(const History& lost, const Event& loser) {
    behind_.clear();
    behind_.insert(loser);
    for (const Event* event : lost.all) {
      const bool follows = std::ranges::any_of(event->preset, [this](const Condition* condition) {
        return !condition->is_initial() && behind_.contains(*condition->pre_event);
      });
      if (follows) behind_.insert(*event);
    }
  }

  // ---- the new signal

  // It is excited when the settled events have fired; then a choice is made against a dummy.
  void check_occurrence(OccurrenceId id) {
    const auto& causes = candidates_.occurrence(id).causes;
    const bool may_lose = std::ranges::any_of(causes, [this](auto cause) {
      const Event& event = base::element(prefix_.events, cause);
      return net::is_dummy(event) && may_lose_[event];
    });
    if (!may_lose) return;
    const History lost = history_of(id);
    for (const Rivalry& rivalry : rivalries_of(lost)) {
      const History made = history_of(*rivalry.winner);
      const Events before = without(made.all, *rivalry.winner);
      if (!mark_all({&lost.all, &before}, first_)) continue;
      if (!is_replaced(id, lost, made, *rivalry.winner))
        keeps_[candidates_.candidate_of(id)] = false;
    }
  }

  // The same of occurrences that are not in the prefix.
  void check_occurrences_behind(const Event& cut_off) {
    if (!may_lose_[cut_off]) return;
    const History lost = history_of(cut_off);
    const auto can_happen = [&](const Rivalry& rivalry) {
      const Events before = without(history_of(*rivalry.winner).all, *rivalry.winner);
      return mark_all({&lost.all, &before}, first_);
    };
    if (std::ranges::none_of(rivalries_of(lost), can_happen)) return;
    Transitions dummies = transitions_behind(*cut_off.transition);
    std::erase_if(dummies, [](const Transition* t) { return !t->signal->is_dummy(); });
    for (const CandidateId id : candidates_.all())
      if (is_made_anew(candidates_.insertion(id), *cut_off.transition, dummies)) keeps_[id] = false;
  }

  // Another occurrence of the candidate is excited after the winner, and nothing but what has lost
  // could take that away.
  bool is_replaced(OccurrenceId id, const History& lost, const History& made, const Event& winner) {
    if (winner.is_cut_off()) return false;
    const auto occurrences = candidates_.occurrences_of(candidates_.candidate_of(id));
    return std::any_of(occurrences.begin(), occurrences.end(), [&](OccurrenceId other) {
      if (other == id) return false;
      const History given = history_of(other);
      const auto is_lost = [&](const Rivalry& rivalry) {
        return std::ranges::count(lost.open, rivalry.winner) != 0;
      };
      if (!std::ranges::all_of(rivalries_of(given), is_lost)) return false;
      if (!mark_all({&lost.settled, &made.all, &given.all}, first_)) return false;
      mark_all({&lost.settled, &made.all}, first_);
      return !has_fired(other) && std::ranges::all_of(given.settled, [this](const Event* event) {
        return first_.contains(*event);
      });
    });
  }

  const Candidates& candidates_;
  const net::StgPrefix& prefix_;
  base::IndexedBy<net::Insertion, bool> keeps_;
  base::IndexedBy<Event, std::vector<OccurrenceId>> leaders_;       // that the event waits for
  base::IndexedBy<Transition, std::vector<CandidateId>> delayers_;  // that the transition waits for
  base::IndexedBy<Event, bool> may_lose_;         // a choice against it or a dummy right before it
  base::MarkSet<Event> first_, second_, behind_;  // scratch
};

bool has_choices(const net::StgPrefix& prefix) {
  return std::ranges::any_of(prefix.conditions, [](const auto& condition) {
    return condition->postset.size() > 1 &&
           std::ranges::any_of(condition->postset, [](const Event* event) {
             return net::is_dummy(*event) || is_driven(*event->transition->signal);
           });
  });
}

}  // namespace

void remove_hazards(const net::StgPrefix& prefix, std::vector<net::Insertion>& insertions) {
  if (!has_choices(prefix)) return;
  const Candidates candidates(prefix, insertions);
  const auto keeps = PersistencyCheck(candidates).run();
  insertions.clear();
  for (const CandidateId id : candidates.all())
    if (keeps[id]) insertions.push_back(candidates.insertion(id));
}

}  // namespace vorel::resolution
