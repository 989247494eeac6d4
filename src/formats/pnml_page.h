// formats/pnml_page.h - the places and transitions of a `page`, of a net or of a process.
// Here:      declaring them by their ids, looking up references to them.
// Not here:  the arcs between them (formats/pnml_arcs.h), what is told inside of them
//            (formats/pnml_original_net.h, formats/pnml_process.h).
// Nodes (places and transitions alike) are numbered together, in document order.
#pragma once

#include <cassert>
#include <cstdint>
#include <string_view>
#include <vector>

#include "formats/pnml_document.h"
#include "formats/pnml_ids.h"

namespace vorel::formats::pnml {

struct PageNode {
  const XmlNode* element;
  std::uint32_t index;  // among the places or among the transitions
  bool is_place;
};

class PageNodes {
 public:
  // Declares all places and transitions of the page, and counts its arcs; false after an error.
  bool declare(const XmlNode& page);

  std::uint32_t size() const { return ids_.size(); }
  std::uint32_t place_count() const { return place_count_; }
  std::uint32_t transition_count() const { return size() - place_count_; }
  std::uint32_t arc_count() const { return arc_count_; }  // repeated ones included
  const PageNode& operator[](std::uint32_t number) const {
    assert(number < nodes_.size());
    return nodes_[number];
  }
  std::vector<PageNode>::const_iterator begin() const { return nodes_.begin(); }
  std::vector<PageNode>::const_iterator end() const { return nodes_.end(); }
  std::string_view id(std::uint32_t number) const { return ids_.id(number); }

  // The number of the node, no_index if there is none.
  std::uint32_t find(std::string_view id) const { return ids_.find(id); }
  // The index of the place or transition that the attribute `ref` of `referrer` names; no_index
  // after an error, which a node of the other sort is as well.
  std::uint32_t resolve_place(const XmlNode& referrer) const;
  std::uint32_t resolve_transition(const XmlNode& referrer) const;
  std::uint32_t resolve_transition(const XmlAttribute& ref) const;

 private:
  std::uint32_t resolve(std::string_view id, bool is_place) const;

  IdTable ids_;
  std::vector<PageNode> nodes_;
  std::uint32_t place_count_ = 0;
  std::uint32_t arc_count_ = 0;
};

}  // namespace vorel::formats::pnml
