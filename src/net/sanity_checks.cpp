#include "net/sanity_checks.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "base/indexed_by.h"
#include "base/messages.h"
#include "net/causality.h"
#include "net/occurrence_order.h"

namespace vorel::net {
namespace {

// All elements of the list that satisfy the predicate, as "c1, c5, c7"; their number in `count`.
template <class T, class Predicate>
std::string labels_where(const base::OwnedList<T>& list, char letter, Predicate holds,
                         std::uint64_t& count) {
  std::string labels;
  count = 0;
  for (const auto& element : list) {
    if (!holds(*element)) continue;
    if (count++ > 0) labels += ", ";
    labels += letter + std::to_string(element->index);
  }
  return labels;
}

// True when each of `links` is among `others`; `marks` is scratch.
template <class T, class Links, class Others>
bool all_among(const Links& links, const Others& others, base::MarkSet<T>& marks) {
  marks.clear();
  for (const T* element : others) marks.insert(*element);
  return std::ranges::all_of(links, [&](const T* element) { return marks.contains(*element); });
}

// One direction of links (consumption or production), seen from the conditions and from the events.
template <Process P>
class LinkComparison {
 public:
  explicit LinkComparison(const P& process)
      : process_{process},
        first_(process.events.size() + 1),
        in_event_(process.conditions.size()) {}

  // `of_condition` gives a condition's events, `of_event` an event's conditions. True when both
  // tell of the same links, each exactly once, between elements of the process.
  template <class OfCondition, class OfEvent>
  bool agree(OfCondition of_condition, OfEvent of_event) {
    if (!collect(of_condition)) return false;
    return std::ranges::all_of(process_.events, [this, of_event](const auto& event) {
      return matches(*event, of_event(*event));
    });
  }

 private:
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  template <class T>
  static bool is_listed(const base::OwnedList<T>& list, const T* element) {
    return element->index < list.size() && list[element->index].get() == element;
  }

  // conditions_[first_[e] .. first_[e + 1]) become the conditions that name event e.
  template <class OfCondition>
  bool collect(OfCondition of_condition) {
    for (const auto& condition : process_.conditions) {
      for (const Event* event : of_condition(*condition)) {
        if (!is_listed(process_.events, event)) return false;
        ++first_[event->index + 1];
      }
    }
    std::partial_sum(first_.begin(), first_.end(), first_.begin());
    conditions_.resize(first_.back());
    std::vector<std::uint32_t> next(first_.begin(), first_.end() - 1);
    for (const auto& condition : process_.conditions) {
      for (const Event* event : of_condition(*condition)) {
        conditions_[next[event->index]++] = condition.get();
      }
    }
    return true;
  }

  template <class Links>
  bool matches(const Event& event, const Links& links) {
    const std::uint32_t first = first_[event.index], last = first_[event.index + 1];
    if (links.size() != last - first) return false;
    in_event_.clear();
    for (const Condition* condition : links) {
      if (!is_listed(process_.conditions, condition) || !in_event_.insert(*condition)) return false;
    }
    for (std::uint32_t i = first; i < last; ++i) {
      if (!in_event_.contains(*conditions_[i])) return false;
      in_event_.erase(*conditions_[i]);  // a second entry of the same link finds nothing
    }
    return true;
  }

  const P& process_;
  std::vector<std::uint32_t> first_;
  std::vector<const Condition*> conditions_;
  base::MarkSet<Condition> in_event_;
};

template <class T>
bool positions_are_indices(const base::OwnedList<T>& list) {
  std::uint32_t position = 0;
  return std::ranges::all_of(
      list, [&position](const auto& element) { return element->index == position++; });
}

// A faulty structure gives no error: it is the reader's or the producer's fault, not the net's.
template <Process P>
bool is_consistent(const P& process) {
  if (!positions_are_indices(process.conditions) || !positions_are_indices(process.events)) {
    return false;
  }
  LinkComparison<P> consumption(process), production(process);
  return consumption.agree(
             [](const auto& c) -> const auto& { return c.postset; },
             [](const auto& e) -> const auto& { return e.preset; }) &&
         production.agree([](const auto& c) { return c.producers(); },
                          [](const auto& e) -> const auto& { return e.postset; });
}

// No event of a prefix may precede itself: such an event never fires, yet nothing in the encoding
// of a configuration would forbid it.
template <Process P>
bool is_acyclic(const P& process) {
  if constexpr (!P::is_merged) {
    const auto order = topological_order(process);
    if (order.size() == process.events.size()) return true;
    base::IndexedBy<typename P::Event, bool> ordered(process.events.size());
    for (const auto* event : order) ordered[*event] = true;
    std::uint64_t count = 0;
    const std::string labels = labels_where(
        process.events, 'e', [&](const auto& e) { return !ordered[e]; }, count);
    base::print_error(
        base::format_message("the prefix contains %llu event(s) on or after a causal cycle: %s",
                             static_cast<unsigned long long>(count), labels.c_str()));
    return false;
  }
  return true;
}

// What a transition consumes and produces is told twice, by the net and by its events. Engines look
// at either, so a contradiction would make them give different answers. A cut-off may leave out
// some of what it produces: nothing is behind it.
template <Process P>
class TransitionComparison {
 public:
  using Event = typename P::Event;

  bool agrees(const Event& event) {
    const auto& transition = *event.transition;
    list_places(event.preset);
    if (!std::ranges::equal(places_, transition.preset, {}, {}, index_of)) {
      return fail(event, "consume from");
    }
    list_places(event.postset);
    const bool matches = event.is_cut_off()
                             ? std::ranges::includes(transition.postset, places_, {}, index_of, {})
                             : std::ranges::equal(places_, transition.postset, {}, {}, index_of);
    return matches || fail(event, "produce on");
  }

 private:
  static constexpr auto index_of = [](const auto* place) { return place->index; };

  template <class Conditions>
  void list_places(const Conditions& conditions) {
    places_.clear();
    for (const auto* condition : conditions) places_.push_back(condition->place->index);
    std::ranges::sort(places_);
  }

  static bool fail(const Event& event, const char* what) {
    base::print_error(base::format_message("event e%u does not %s the places of its transition %s",
                                           event.index, what, event.transition->name.c_str()));
    return false;
  }

  std::vector<std::uint32_t> places_;  // of a preset or postset, in order
};

template <Process P>
bool events_match_transitions(const P& process) {
  TransitionComparison<P> comparison;
  return std::ranges::all_of(process.events,
                             [&](const auto& event) { return comparison.agrees(*event); });
}

// A configuration of a merged process is told from other sets of events by the depths: what jumps
// over one would look like a run until it is replayed.
template <class N>
bool has_ordered_occurrences(const MergedProcessOf<N>& process) {
  const auto [fault, condition, event] = find_disordered_occurrence(process);
  if (fault == OccurrenceFault::none) return true;
  const char* const place = condition->place->name.c_str();
  const int depth = condition->occurrence_depth;
  switch (fault) {
    case OccurrenceFault::repeated:
      base::print_error(
          base::format_message("place %s has two conditions at occurrence depth %d", place, depth));
      break;
    case OccurrenceFault::gap:
      base::print_error(base::format_message(
          "place %s has a condition at occurrence depth %d and none at %d: c%u", place, depth,
          depth - 1, condition->index));
      break;
    case OccurrenceFault::marked_later:
      base::print_error(
          base::format_message("place %s is initially marked at occurrence depth %d, not at its "
                               "first: c%u",
                               place, depth, condition->index));
      break;
    default:
      base::print_error(base::format_message(
          "event e%u enters place %s at occurrence depth %d, which is not the next after it "
          "leaves it",
          event->index, place, depth));
  }
  return false;
}

template <class N>
bool has_ordered_occurrences(const PrefixOf<N>&) {
  return true;
}

template <Process P>
bool is_safe_initially(const P& process) {
  if constexpr (P::is_merged) {
    std::uint64_t count = 0;
    const std::string labels = labels_where(
        process.conditions, 'c', [](const auto& c) { return c.initial_marking > 1; }, count);
    if (count == 0) return true;
    base::print_error("the initial marking is not safe: place(s) " + labels);
    return false;
  }
  return true;
}

// "the net contains COUNT WHAT: LABELS", or an empty text if no element satisfies the predicate.
template <class T, class Predicate>
std::string finding(const base::OwnedList<T>& list, char letter, std::string_view what,
                    Predicate holds) {
  std::uint64_t count = 0;
  const std::string labels = labels_where(list, letter, holds, count);
  if (count == 0) return {};
  return "the net contains " + std::to_string(count) + " " + std::string(what) + ": " + labels;
}

void warn_if_any(const std::string& text) {
  if (!text.empty()) base::print_warning(text);
}

template <Process P>
void warn_of_self_loops(const P& process) {
  base::MarkSet<typename P::Condition> marks(process.conditions.size());
  for (const auto& event : process.events) {
    if (event->preset.size() > event->postset.size()) continue;
    if (!all_among(event->preset, event->postset, marks)) continue;
    if (event->preset.size() == event->postset.size()) {
      base::print_warning(base::format_message("*T=T* for transition e%u; |*T|=%u", event->index,
                                               event->preset.size()));
    } else {
      base::print_warning(
          base::format_message("*T<T* for transition e%u; the net may be unbounded", event->index));
    }
  }
}

// An unmarked condition all of whose producers also consume, and there are not more of them than
// consumers: nothing ever brings the first token.
template <class Condition>
bool has_no_real_producer(const Condition& condition,
                          base::MarkSet<typename Condition::Event>& marks) {
  const auto producers = condition.producers();
  return !condition.is_initial() && !producers.empty() &&
         producers.size() <= condition.postset.size() &&
         all_among(producers, condition.postset, marks);
}

template <Process P>
void warn_of_odd_structure(const P& process) {
  warn_if_any(finding(process.events, 'e', "transition(s) with empty postset",
                      [](const auto& e) { return e.postset.empty(); }));
  warn_of_self_loops(process);
  warn_if_any(finding(process.conditions, 'c', "isolated place(s)",
                      [](const auto& c) { return c.producers().empty() && c.postset.empty(); }));
  base::MarkSet<typename P::Event> marks(process.events.size());
  warn_if_any(finding(process.conditions, 'c', "unmarked place(s) with no producing arcs",
                      [&marks](const auto& c) { return has_no_real_producer(c, marks); }));
}

}  // namespace

template <Process P>
bool passes_sanity_checks(const P& process) {
  bool passes = is_consistent(process);
  if (!passes) base::note_silent_failure("its links contradict each other");
  // Links that contradict each other mean nothing beyond that.
  if (passes) {
    passes = is_acyclic(process) && events_match_transitions(process) &&
             has_ordered_occurrences(process);
  }
  passes = is_safe_initially(process) && passes;
  const std::string empty_presets = finding(process.events, 'e', "transition(s) with empty preset",
                                            [](const auto& e) { return e.preset.empty(); });
  if (!empty_presets.empty()) {
    base::print_error(empty_presets);
    passes = false;
  }
  warn_of_odd_structure(process);
  return passes;
}

#define INSTANTIATE(P) template bool passes_sanity_checks<P>(const P&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::net
