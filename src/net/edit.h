// net/edit.h - changing the net of a prefix together with the prefix.
// Here:      elementary edits, and the numbering that ends a series of them.
// Not here:  which edits make a transformation (net/insert_transition.h), and whether the result is
//            still a complete prefix of its net: that is for who chooses the edits.
//
// Between the first edit and finish_edit() the prefix is open: links are entered on both sides, but
// lists are not sorted, events are not numbered causally, and what was removed stays in its list
// with index no_index and without links. Indices stay as they were; new elements are at the ends of
// their lists. Pointers to elements that are not removed stay valid all the time.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::net {

// The name, or the first of "NAME/1", "NAME/2", ... that no place and no transition has.
std::string unique_node_name(const Stg& stg, std::string_view name);

// A signal with the base name, or the first of BASE1, BASE2, ... that no signal has. Signals are
// sorted and numbered at once. The initial value is 0, 1 or unknown_value.
Signal& insert_signal(Stg& stg, std::string_view base_name, SignalKind kind,
                      std::uint8_t initial_value);

// New elements have no arcs and no links; their names are made unique. A marked place comes with
// its initial condition, which is the last of the conditions then.
StgPlace& add_place(StgPrefix& prefix, std::string_view name, bool marked);
// Named by the signal and the sign; a dummy by its signal alone.
StgTransition& add_transition(StgPrefix& prefix, Signal& signal, Sign sign);
// Without a producer; to be given one, but for initial conditions, which add_place() makes.
StgPrefix::Condition& add_condition(StgPrefix& prefix, StgPlace& place);
StgPrefix::Event& add_event(StgPrefix& prefix, StgTransition& transition);

// Removes a link, which must exist. A condition without its producer gets another or is removed.
void remove_link(StgPrefix::Condition& condition, StgPrefix::Event& event);
void remove_link(StgPrefix::Event& event, StgPrefix::Condition& condition);

// Removes the arc, which must exist, and its links: no event of the transition consumes from (or
// produces on) the place afterwards. Walks all events.
void remove_arc(StgPrefix& prefix, StgPlace& place, StgTransition& transition);
void remove_arc(StgPrefix& prefix, StgTransition& transition, StgPlace& place);

// Removes the condition with its links. One that its cut-off left out of the list loses its links
// only.
void remove_condition(StgPrefix::Condition& condition);
// Removes the places with their arcs and conditions. No event may be left without a preset.
void remove_places(StgPrefix& prefix, std::span<StgPlace* const> places);

// The new number of an element by its position before finish_edit(); no_index for a removed one.
template <class Element>
using NewNumbers = base::IndexedBy<Element, base::Id<Element>>;
struct Renumbering {
  NewNumbers<StgPlace> places;
  NewNumbers<StgTransition> transitions;
  NewNumbers<StgPrefix::Condition> conditions;
  NewNumbers<StgPrefix::Event> events;
};

// Drops what was removed and numbers all anew: places and transitions by name; events causally, in
// their order if that is causal; conditions by producer, the initial ones first, then by place.
// Sorts all lists. Good for a prefix as it was read, too. Linear but for sorting.
Renumbering finish_edit(StgPrefix& prefix);

}  // namespace vorel::net
