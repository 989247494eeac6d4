#include "net/check.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <span>
#include <vector>

#include "net/causality.h"
#include "net/occurrence_order.h"

namespace vorel::net {
namespace {

using Numbers = std::vector<std::uint32_t>;

// All of this is asked by assertions alone, and goes with them in release builds.
constexpr auto index_of = [](const auto* element) { return element->index; };
constexpr auto place_of = [](const auto* condition) { return condition->place->index; };

template <class T>
bool is_in(const base::OwnedList<T>& list, const T* element) {
  return element != nullptr && element->index < list.size() &&
         list[element->index].get() == element;
}

template <class T>
bool is_numbered(const base::OwnedList<T>& list) {
  return std::ranges::all_of(list, [&list](const auto& e) { return is_in(list, e.get()); });
}

template <class T>
bool are_sorted(const base::OwnedList<T>& list) {
  return std::ranges::all_of(list, [](const auto& element) {
    return std::ranges::is_sorted(element->preset, {}, index_of) &&
           std::ranges::is_sorted(element->postset, {}, index_of);
  });
}

// The links told by one side, turned round: for each of `count` elements of the other side those
// that name it, ascending. All ends are at first[end]. False for a link that leads outside.
struct TurnedLinks {
  Numbers first, sources;

  template <class From, class To, class LinksOf>
  bool collect(const base::OwnedList<From>& from, const base::OwnedList<To>& to, LinksOf links_of) {
    first.assign(to.size() + 1, 0);
    for (const auto& element : from) {
      for (const To* target : links_of(*element)) {
        if (!is_in(to, target)) return false;
        ++first[target->index + 1];
      }
    }
    std::partial_sum(first.begin(), first.end(), first.begin());
    sources.resize(first.back());
    Numbers next(first.begin(), first.end() - 1);
    for (const auto& element : from) {
      for (const To* target : links_of(*element)) sources[next[target->index]++] = element->index;
    }
    return true;
  }
  std::span<const std::uint32_t> operator[](std::uint32_t target) const {
    return std::span(sources).subspan(first[target], first[target + 1] - first[target]);
  }
};

// True when the links of `from` are those of `to`, as often. Elements of `from` that are in no list
// are skipped on the other side.
template <class From, class To, class LinksOfFrom, class LinksOfTo>
bool agree(const base::OwnedList<From>& from, const base::OwnedList<To>& to,
           LinksOfFrom links_of_from, LinksOfTo links_of_to) {
  TurnedLinks turned;
  if (!turned.collect(from, to, links_of_from)) return false;
  Numbers told;
  return std::ranges::all_of(to, [&](const auto& element) {
    told.clear();
    for (const From* source : links_of_to(*element)) {
      if (source->index == base::no_index) continue;
      if (!is_in(from, source)) return false;
      told.push_back(source->index);
    }
    if (!std::ranges::is_sorted(told)) std::ranges::sort(told);
    return std::ranges::equal(told, turned[element->index]);
  });
}

constexpr auto preset_of = [](const auto& element) -> const auto& { return element.preset; };
constexpr auto postset_of = [](const auto& element) -> const auto& { return element.postset; };
constexpr auto producers_of = [](const auto& condition) { return condition.producers(); };

template <class T>
bool has_no_repetition(const base::PtrList<T>& links) {
  Numbers numbers;
  for (const T* element : links) {
    if (element->index != base::no_index) numbers.push_back(element->index);
  }
  std::ranges::sort(numbers);
  return std::ranges::adjacent_find(numbers) == numbers.end();
}

template <class Condition, class Place>
Numbers places_of(const base::PtrList<Condition>& conditions, const base::PtrList<Place>&) {
  Numbers places;
  std::ranges::transform(conditions, std::back_inserter(places), place_of);
  std::ranges::sort(places);
  return places;
}

// The places of the conditions are those of the arcs; after a cut-off some may be missing.
template <class Event>
bool has_arcs_of_transition(const Event& event) {
  const auto& transition = *event.transition;
  Numbers arcs;
  std::ranges::transform(transition.postset, std::back_inserter(arcs), index_of);
  const Numbers produced = places_of(event.postset, transition.postset);
  if (!std::ranges::equal(places_of(event.preset, transition.preset), transition.preset, {}, {},
                          index_of)) {
    return false;
  }
  return event.is_cut_off() ? std::ranges::includes(arcs, produced) : arcs == produced;
}

template <Process P>
bool are_tokens_initial_conditions(const P& process) {
  Numbers tokens(process.places.size());
  for (const auto& condition : process.conditions) {
    if constexpr (P::is_merged) {
      tokens[place_of(condition.get())] += condition->initial_marking;
    } else {
      tokens[place_of(condition.get())] += condition->is_initial() ? 1 : 0;
    }
  }
  return std::ranges::all_of(process.places, [&tokens](const auto& place) {
    return place->initial_marking == tokens[place->index];
  });
}

template <class N>
bool are_correspondents_events(const PrefixOf<N>& prefix) {
  return std::ranges::all_of(prefix.events, [&prefix](const auto& event) {
    const auto& cut_off = event->cut_off;
    return !cut_off.is_cut_off() || cut_off.is_unknown() ||
           std::ranges::all_of(cut_off.correspondents(), [&prefix](const auto* correspondent) {
             return is_in(prefix.events, correspondent);
           });
  });
}

template <class N>
bool is_left_out_behind_cut_offs_only(const PrefixOf<N>& prefix) {
  return std::ranges::all_of(prefix.events, [](const auto& event) {
    return std::ranges::all_of(event->postset, [&event](const auto* condition) {
      return condition->index != base::no_index ||
             (event->is_cut_off() && condition->postset.empty());
    });
  });
}

template <class N>
void check_kind([[maybe_unused]] const PrefixOf<N>& prefix) {
  assert(are_sorted(prefix.events) && "links of events ascend");
  assert(std::ranges::all_of(prefix.conditions,
                             [](const auto& condition) {
                               return std::ranges::is_sorted(condition->postset, {}, index_of);
                             }) &&
         "links of conditions ascend");
  assert(are_correspondents_events(prefix) && "correspondents are events of the prefix");
  assert(is_left_out_behind_cut_offs_only(prefix) && "only cut-offs leave conditions out");
  assert(topological_order(prefix).size() == prefix.events.size() && "no event causes itself");
}

template <class N>
void check_kind([[maybe_unused]] const MergedProcessOf<N>& process) {
  assert(find_disordered_occurrence(process).fault == OccurrenceFault::none &&
         "the occurrences of a place have the depths 1, 2, ...");
}

void check_net([[maybe_unused]] const Net& net) { check(net); }
void check_net([[maybe_unused]] const Stg& stg) { check(stg); }

}  // namespace

template <class T>
void check_arcs([[maybe_unused]] const NetOf<T>& net) {
  assert(is_numbered(net.places) && "the index of a place is its position");
  assert(is_numbered(net.transitions) && "the index of a transition is its position");
  assert(are_sorted(net.places) && are_sorted(net.transitions) && "arcs ascend");
  assert(agree(net.places, net.transitions, postset_of, preset_of) && "both ends know an arc");
  assert(agree(net.places, net.transitions, preset_of, postset_of) && "both ends know an arc");
}

void check_signals([[maybe_unused]] const Stg& stg) {
  assert(is_numbered(stg.signals) && "the index of a signal is its position");
  assert(std::ranges::is_sorted(stg.signals,
                                [](const auto& a, const auto& b) {
                                  return a->kind != b->kind ? a->kind < b->kind
                                                            : name_less(a->name, b->name);
                                }) &&
         "signals ascend by kind and name");
  assert(stg.inputs_end <= stg.outputs_end && stg.outputs_end <= stg.internals_end &&
         stg.internals_end <= stg.signals.size());
  assert(std::ranges::all_of(stg.signals,
                             [&stg](const auto& signal) {
                               const std::uint32_t ends[] = {
                                   0, stg.inputs_end, stg.outputs_end, stg.internals_end,
                                   static_cast<std::uint32_t>(stg.signals.size())};
                               const auto kind = static_cast<std::size_t>(signal->kind);
                               return ends[kind] <= signal->index && signal->index < ends[kind + 1];
                             }) &&
         "each kind is a range");
  assert(
      std::ranges::all_of(
          stg.signals, [](const auto& signal) { return signal->initial_value <= unknown_value; }) &&
      "a value is 0, 1 or unknown");
}

void check(const Net& net) { check_arcs(net); }

void check(const Stg& stg) {
  check_arcs(stg);
  check_signals(stg);
  assert(std::ranges::all_of(stg.transitions,
                             [&stg](const auto& transition) {
                               return is_in(stg.signals, transition->signal) &&
                                      transition->sign <= Sign::toggle;
                             }) &&
         "each transition is labelled");
}

template <Process P>
void check(const P& process) {
  check_net(process);
  assert(is_numbered(process.conditions) && "the index of a condition is its position");
  assert(is_numbered(process.events) && "the index of an event is its position");
  assert(std::ranges::all_of(process.conditions,
                             [&process](const auto& condition) {
                               return is_in(process.places, condition->place);
                             }) &&
         "a condition is an occurrence of a place of the net");
  assert(std::ranges::all_of(process.events,
                             [&process](const auto& event) {
                               return is_in(process.transitions, event->transition) &&
                                      !event->preset.empty();
                             }) &&
         "an event is an occurrence of a transition of the net, and consumes");
  assert(agree(process.conditions, process.events, postset_of, preset_of) &&
         "both ends know what is consumed");
  assert(agree(process.conditions, process.events, producers_of, postset_of) &&
         "both ends know what is produced");
  assert(std::ranges::all_of(process.events,
                             [](const auto& event) {
                               return has_no_repetition(event->preset) &&
                                      has_no_repetition(event->postset);
                             }) &&
         "a link is entered once");
  assert(std::ranges::all_of(process.events,
                             [](const auto& event) { return has_arcs_of_transition(*event); }) &&
         "an event consumes and produces what its transition does");
  assert(are_tokens_initial_conditions(process) && "tokens are initial conditions");
  check_kind(process);
}

template void check_arcs<Transition>(const NetOf<Transition>&);
template void check_arcs<StgTransition>(const NetOf<StgTransition>&);
#define INSTANTIATE(P) template void check<P>(const P&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::net
