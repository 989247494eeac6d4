// net/process.h - finite complete prefixes of unfoldings, and merged processes.
// Here:      the four classes of process, their conditions and events, cut-off information.
// Not here:  files (formats/mci_reader.h, formats/mp_reader.h, formats/pnml_reader.h), checks
//            (net/sanity_checks.h), one process out of several kinds (net/process_variant.h).
//
// A process has its net as base and two more owned lists. Processes are read-only once loaded,
// but for those that the built-in unfolder makes.
// Invariants, which check() walks through (net/check.h): the object at position i of a list has
// index i; each link is entered once on both sides; every event consumes something; the arcs of a
// transition are those of any of its events, mapped to places (a cut-off may lack some of what it
// produces); the initial marking of a place is its number of initial conditions. In a prefix no
// event causes itself and correspondents are events of the prefix; in a merged process the
// conditions of a place have the depths 1, 2, ... (net/occurrence_order.h).
#pragma once

#include <cassert>
#include <cstdint>
#include <memory>
#include <new>
#include <ostream>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/large_blocks.h"
#include "net/net.h"

namespace vorel::net {

template <class N>
struct EventOf;

// Elements of a large process lie side by side in blocks of it. Such an element leaves its memory
// to these when it is deleted; any other one is given back by itself.
template <class Element>
void delete_element(Element* element) {
  const bool lies_in_block = element->lies_in_block;
  element->~Element();
  if (!lies_in_block) ::operator delete(element);
}

// An occurrence of a place in a prefix.
template <class N>
struct ConditionOf {
  using Event = EventOf<N>;

  // no_index for a condition after a cut-off that its producer left out of the list: a valid object
  // with a place and without consumers, reached only through its event's postset.
  std::uint32_t index = base::no_index;
  bool lies_in_block = false;
  Event* pre_event = nullptr;  // null for a condition of the initial cut
  typename N::Place* place = nullptr;
  base::PtrList<Event> postset;  // by index

  static void operator delete(ConditionOf* condition, std::destroying_delete_t) {
    delete_element(condition);
  }

  bool is_initial() const { return pre_event == nullptr; }
  // The producers as a list, as in a merged process: one event or none.
  std::span<Event* const> producers() const {
    return {&pre_event, pre_event == nullptr ? std::size_t{0} : std::size_t{1}};
  }
};

// Whether an event is a cut-off and with what correspondent. One word: 0 not a cut-off, 1 the
// initial marking, 2 unknown, else a pointer to an event, or with the low bit set to an owned list
// of events. A list has two elements at least: fewer have forms of their own.
template <class Event>
class CutOffInfo {
 public:
  CutOffInfo() = default;
  CutOffInfo(CutOffInfo&& other) noexcept : word_{std::exchange(other.word_, 0)} {}
  CutOffInfo& operator=(CutOffInfo&& other) noexcept {
    std::swap(word_, other.word_);
    return *this;
  }
  CutOffInfo(const CutOffInfo&) = delete;
  CutOffInfo& operator=(const CutOffInfo&) = delete;
  ~CutOffInfo() { clear(); }

  bool is_cut_off() const { return word_ != 0; }
  bool is_unknown() const { return word_ == 2; }
  bool is_initial_marking() const { return word_ == 1; }

  // The correspondents: none for the initial marking. Not to be asked of an unknown one.
  std::span<Event* const> correspondents() const {
    assert(is_cut_off() && !is_unknown());
    if (is_initial_marking()) return {};
    if (is_list()) return *list();
    static_assert(sizeof(Event*) == sizeof(word_));
    return {reinterpret_cast<Event* const*>(&word_), 1};
  }

  void clear() {
    if (is_list()) delete list();
    word_ = 0;
  }
  void set_unknown() { set(2); }
  // None: the initial marking; one: that event; more: the list.
  void set_correspondents(std::span<Event* const> events) {
    if (events.empty()) {
      set(1);
    } else if (events.size() == 1) {
      set(reinterpret_cast<std::uintptr_t>(events.front()));
    } else {
      auto owned = std::make_unique<List>(events.begin(), events.end());
      set(reinterpret_cast<std::uintptr_t>(owned.release()) | 1u);
    }
  }

 private:
  using List = std::vector<Event*>;

  bool is_list() const { return word_ > 2 && (word_ & 1u) != 0; }
  List* list() const { return reinterpret_cast<List*>(word_ & ~std::uintptr_t{1}); }
  void set(std::uintptr_t word) {
    clear();
    word_ = word;
  }

  std::uintptr_t word_ = 0;
};

// An occurrence of a transition in a prefix.
template <class N>
struct EventOf {
  std::uint32_t index = base::no_index;
  bool lies_in_block = false;
  base::PtrList<ConditionOf<N>> preset;  // consumed, by index
  typename N::Transition* transition = nullptr;
  CutOffInfo<EventOf> cut_off;
  base::PtrList<ConditionOf<N>> postset;  // produced, by index

  static void operator delete(EventOf* event, std::destroying_delete_t) { delete_element(event); }

  bool is_cut_off() const { return cut_off.is_cut_off(); }
  // For readers that know no more than the fact.
  void mark_cut_off() { cut_off.set_unknown(); }
};

template <class N>
struct MpEventOf;

// All conditions of one place at one occurrence depth.
template <class N>
struct MpConditionOf {
  using Event = MpEventOf<N>;

  std::uint32_t index = base::no_index;
  base::PtrList<Event> preset;         // all mp-events that produce it, in any order
  typename N::Place* place = nullptr;  // never null in a finished process
  std::int32_t occurrence_depth = -1;  // at least 1 once set
  std::uint32_t initial_marking = 0;   // 0 or 1 once loaded, 1 only at the first depth
  base::PtrList<Event> postset;        // all mp-events that consume it, in any order

  bool is_initial() const { return initial_marking != 0; }
  std::span<Event* const> producers() const { return preset; }
};

template <class N>
struct MpEventOf {
  std::uint32_t index = base::no_index;
  base::PtrList<MpConditionOf<N>> preset;  // consumed, in any order
  typename N::Transition* transition = nullptr;
  bool cut_off = false;                     // no correspondent is kept
  base::PtrList<MpConditionOf<N>> postset;  // produced, in any order

  bool is_cut_off() const { return cut_off; }
  void mark_cut_off() { cut_off = true; }
};

template <class N>
struct PrefixOf : N {
  using NetType = N;
  using Condition = ConditionOf<N>;
  using Event = EventOf<N>;
  static constexpr bool is_merged = false;

  base::BlockList blocks;
  base::OwnedList<Condition> conditions;
  base::OwnedList<Event> events;
};

template <class N>
struct MergedProcessOf : N {
  using NetType = N;
  using Condition = MpConditionOf<N>;
  using Event = MpEventOf<N>;
  static constexpr bool is_merged = true;

  base::OwnedList<Condition> conditions;
  base::OwnedList<Event> events;
};

using NetPrefix = PrefixOf<Net>;
using StgPrefix = PrefixOf<Stg>;
using NetMergedProcess = MergedProcessOf<Net>;
using StgMergedProcess = MergedProcessOf<Stg>;

template <class P>
concept Process = std::is_same_v<P, NetPrefix> || std::is_same_v<P, StgPrefix> ||
    std::is_same_v<P, NetMergedProcess> || std::is_same_v<P, StgMergedProcess>;

// True for an event of a dummy signal. A plain net has no signals, so none of its events is one.
template <class N>
bool is_dummy(const EventOf<N>& event) {
  if constexpr (N::has_signals) return event.transition->signal->is_dummy();
  return false;
}
template <class N>
bool is_dummy(const MpEventOf<N>& event) {
  if constexpr (N::has_signals) return event.transition->signal->is_dummy();
  return false;
}

// For the explicit instantiations: every template over processes is declared in a header, defined
// in a .cpp file and instantiated there from this list.
#define VOREL_FOR_EACH_PROCESS(X) \
  X(net::NetPrefix) X(net::StgPrefix) X(net::NetMergedProcess) X(net::StgMergedProcess)
#define VOREL_FOR_EACH_PREFIX(X) X(net::NetPrefix) X(net::StgPrefix)
#define VOREL_FOR_EACH_MERGED_PROCESS(X) X(net::NetMergedProcess) X(net::StgMergedProcess)

// Enter a link on both sides. A second producer of a condition of a prefix is refused with false;
// nothing is changed then.
template <class N>
bool add_link(ConditionOf<N>& condition, EventOf<N>& event) {
  condition.postset.push_back(&event);
  event.preset.push_back(&condition);
  return true;
}
template <class N>
bool add_link(EventOf<N>& event, ConditionOf<N>& condition) {
  if (condition.pre_event != nullptr) return false;
  condition.pre_event = &event;
  event.postset.push_back(&condition);
  return true;
}
template <class N>
bool add_link(MpConditionOf<N>& condition, MpEventOf<N>& event) {
  condition.postset.push_back(&event);
  event.preset.push_back(&condition);
  return true;
}
template <class N>
bool add_link(MpEventOf<N>& event, MpConditionOf<N>& condition) {
  condition.preset.push_back(&event);
  event.postset.push_back(&condition);
  return true;
}

// Sorts the links of all conditions and events by index.
template <Process P>
void sort_links(P& process);

// Rebuilds the arcs of a net whose file has none: the first event of a transition defines them, a
// cut-off (whose file may have left out what it produces) only where there is no other. A
// transition without events has none.
template <Process P>
void rebuild_arcs(P& process);

// Counts the initial conditions of each place into its initial_marking.
template <Process P>
void count_initial_marking(P& process);

// "\n |B|=... |E|=... |C|=... |BE|=... |EB|=...", flushed. A condition left out after a cut-off
// counts once in B and once more in EB.
template <Process P>
void print_statistics(const P& process, std::ostream& stream);

}  // namespace vorel::net
