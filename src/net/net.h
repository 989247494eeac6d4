// net/net.h - safe nets and Signal Transition Graphs.
// Here:      Net, Stg and their elements, as plain data; numbering and sorting.
// Not here:  the processes of a net (net/process.h), reading and writing files.
//
// A net owns its elements in lists; an element's `index` is its position there; elements point at
// each other with plain pointers that live as long as the net. Nets are moved, never copied.
// Invariants of a finished net, which check() walks through (net/check.h): an index is a position,
// arcs are entered on both sides and sorted, signals are sorted, every transition is labelled.
// The net class is a template argument everywhere: what an STG adds is reached through it, so there
// is no common run-time base and nothing is virtual.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/id.h"
#include "base/ptr_list.h"

namespace vorel::net {

// `T` is the transition class of the net that the place belongs to.
template <class T>
struct PlaceOf {
  std::uint32_t index = base::no_index;
  std::string name;                   // unique but in processes whose file repeats names
  base::PtrList<T> preset;            // transitions that produce on this place, by index
  std::uint32_t initial_marking = 0;  // tokens at the start
  base::PtrList<T> postset;           // transitions that consume from this place, by index
};

template <class T>
struct TransitionOf {
  std::uint32_t index = base::no_index;
  std::string name;
  base::PtrList<PlaceOf<T>> preset;   // input places, by index
  base::PtrList<PlaceOf<T>> postset;  // output places, by index
};

struct Transition : TransitionOf<Transition> {};
using Place = PlaceOf<Transition>;

enum class SignalKind : std::uint8_t { input = 0, output = 1, internal = 2, dummy = 3 };
inline constexpr std::uint8_t signal_kind_count = 4;

enum class Sign : std::uint32_t { plus = 0, minus = 1, toggle = 2 };  // written + - ~

inline constexpr std::uint8_t unknown_value = 2;  // an initial value not known, written "?"

struct Signal {
  std::uint32_t index = base::no_index;
  std::string name;  // without prefix, sign or instance number
  SignalKind kind = SignalKind::dummy;
  std::uint8_t initial_value = unknown_value;  // 0, 1 or unknown_value

  bool is_dummy() const { return kind == SignalKind::dummy; }
};

using SignalId = base::Id<Signal>;

struct StgTransition : TransitionOf<StgTransition> {
  Signal* signal = nullptr;  // set for every transition of a loaded STG
  Sign sign = Sign::toggle;  // stays so for a dummy
};
using StgPlace = PlaceOf<StgTransition>;

template <class T>
struct NetOf {
  using Transition = T;
  using Place = PlaceOf<T>;

  base::OwnedList<Place> places;
  base::OwnedList<T> transitions;
};

struct Net : NetOf<Transition> {
  static constexpr bool has_signals = false;
};

struct Stg : NetOf<StgTransition> {
  static constexpr bool has_signals = true;

  // Sorted by kind, then by the order of names, so that each kind is a range of indices. The three
  // bounds are positions in `signals`; whoever adds a signal calls sort_signals() afterwards.
  base::OwnedList<Signal> signals;
  std::uint32_t inputs_end = 0;     // first signal that is not an input
  std::uint32_t outputs_end = 0;    // first signal that is neither input nor output
  std::uint32_t internals_end = 0;  // first dummy; the dummies run to the end

  // The numbers of the signals that are not dummies, and of those that the circuit drives.
  base::IdRange<Signal> visible_signals() const { return {0, internals_end}; }
  base::IdRange<Signal> driven_signals() const { return {inputs_end, internals_end}; }
};

// The order of names that makes numbering independent of the file: shorter names first, names of
// equal length by their bytes.
bool name_less(std::string_view a, std::string_view b);

// Sort the list by name and renumber it.
template <class T>
void sort_places(NetOf<T>& net);
template <class T>
void sort_transitions(NetOf<T>& net);
// Sorts the presets and postsets of all places and transitions by index.
template <class T>
void sort_adjacency(NetOf<T>& net);
// The three above, in the order in which loading finishes a net (signals are sorted before).
template <class T>
void sort_net(NetOf<T>& net);

// Sorts the signals, renumbers them and recomputes the bounds.
void sort_signals(Stg& stg);
// Appends a signal with unknown initial value; its index is its position until the next sort.
Signal& add_signal(Stg& stg, std::string name, SignalKind kind);

// Sorts a list of pointers by the index of what they point at.
template <class T>
void sort_by_index(base::PtrList<T>& list) {
  const auto less = [](const T* a, const T* b) { return a->index < b->index; };
  if (!std::is_sorted(list.begin(), list.end(), less)) std::sort(list.begin(), list.end(), less);
}

// Enters the arc on both sides.
template <class T>
void add_arc(PlaceOf<T>& place, T& transition) {
  place.postset.push_back(&transition);
  transition.preset.push_back(&place);
}
template <class T>
void add_arc(T& transition, PlaceOf<T>& place) {
  place.preset.push_back(&transition);
  transition.postset.push_back(&place);
}

}  // namespace vorel::net
