// formats/pnml_arcs.h - the arcs of a `page`.
// Here:      reading and checking them, skipping repeated ones, entering them in both their ends.
// Not here:  the nodes (formats/pnml_page.h).
#pragma once

#include <cassert>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/ptr_list.h"
#include "formats/pnml_page.h"

namespace vorel::formats::pnml {

// The arcs of a page by source, each once, targets in ascending order. As places and transitions
// alternate along arcs, and as their indices grow with the numbers of the nodes, so do the lists.
struct PageArcs {
  std::vector<std::uint32_t> first;  // where the targets of a node begin; one entry more at the end
  std::vector<std::uint32_t> target;
  std::vector<std::uint32_t> in_degree;

  std::span<const std::uint32_t> targets_of(std::uint32_t source) const {
    assert(source + 1 < first.size() && first[source] <= first[source + 1]);
    return std::span(target).subspan(first[source], first[source + 1] - first[source]);
  }
};

enum class Producers { any, at_most_one };

// Reads the arcs; repeated ones are skipped with a warning each. `producers` tells how many
// transitions may have an arc to the same place. nullopt after an error.
std::optional<PageArcs> read_arcs(const XmlNode& page, const PageNodes& nodes, Producers producers);

// The producer of a condition of a prefix, or one of those of any other place.
template <class P, class T>
void enter_producer(P& place, T& transition, std::uint32_t producer_count) {
  if constexpr (requires { place.pre_event; }) {
    assert(place.pre_event == nullptr && producer_count == 1);
    place.pre_event = &transition;
  } else {
    assert(place.preset.size() < producer_count);
    place.preset.reserve(producer_count);
    place.preset.push_back(&transition);
  }
}

// Enters the arcs into the elements that the nodes stand for, which must still be in the order of
// the document. All links come out sorted, in lists of just the right size.
template <class P, class T>
void enter_arcs(const PageNodes& nodes, const PageArcs& arcs, base::OwnedList<P>& places,
                base::OwnedList<T>& transitions) {
  assert(nodes.place_count() == places.size());
  assert(nodes.transition_count() == transitions.size());
  for (std::uint32_t source = 0; source < nodes.size(); ++source) {
    const auto targets = arcs.targets_of(source);
    const auto count = static_cast<std::uint32_t>(targets.size());
    if (nodes[source].is_place) {
      P& place = *places[nodes[source].index];
      place.postset.reserve(count);
      for (const std::uint32_t target : targets) {
        T& transition = *transitions[nodes[target].index];
        transition.preset.reserve(arcs.in_degree[target]);
        transition.preset.push_back(&place);
        place.postset.push_back(&transition);
      }
    } else {
      T& transition = *transitions[nodes[source].index];
      transition.postset.reserve(count);
      for (const std::uint32_t target : targets) {
        P& place = *places[nodes[target].index];
        enter_producer(place, transition, arcs.in_degree[target]);
        transition.postset.push_back(&place);
      }
    }
  }
}

}  // namespace vorel::formats::pnml
