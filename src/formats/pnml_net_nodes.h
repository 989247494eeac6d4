// formats/pnml_net_nodes.h - the nodes of a place/transition net in PNML, and what references name.
// Here:      finding nodes and arcs on all pages, ids, following reference nodes to their ends.
// Not here:  building the net (formats/pnml_net_reader.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/source_text.h"
#include "formats/pnml_document.h"
#include "formats/pnml_ids.h"

namespace vorel::formats::pnml {

// The name of the element without the prefix of its namespace.
std::string_view local_name(const XmlNode& element);
// The first child element of that name, or null.
const XmlNode* child_named(const XmlNode& element, std::string_view name);
// The text of the `text` inside the child of the name, each run of white space in it a blank; empty
// if there is none.
std::string label_text(const XmlNode& element, std::string_view name);

class NetNodes {
 public:
  struct Node {
    const XmlNode* element;
    bool is_place;      // or stands for one
    bool is_reference;  // to a node of the same sort
  };

  // The document must outlive this.
  NetNodes(const base::SourceText& source, const Document& document)
      : source_{source}, document_{document} {}

  // Collects all nodes and arcs of the net; false after an error, a reference that ends nowhere
  // among them.
  bool collect(const XmlNode& net);

  const std::vector<Node>& nodes() const { return nodes_; }
  const std::vector<const XmlNode*>& arcs() const { return arcs_; }
  std::string_view id(std::uint32_t node) const { return ids_.id(node); }
  // The number of the place or transition that the id in the attribute names, directly or through
  // references; no_index after an error.
  std::uint32_t resolve(const XmlNode& element, std::string_view attribute_name) const;

  // Report an error at the element; these give false.
  bool fail(const XmlNode& element, const std::string& text) const;
  // `ELEMENT "ID" TEXT`.
  bool fail_of(const XmlNode& element, const std::string& text) const;

 private:
  bool add_children(const XmlNode& page);
  bool add_node(const XmlNode& element, bool is_place, bool is_reference);
  bool follow(std::uint32_t start);
  std::uint32_t find(const XmlNode& element, std::string_view attribute_name) const;

  const base::SourceText& source_;
  const Document& document_;
  IdTable ids_;
  std::vector<Node> nodes_;
  std::vector<std::uint32_t> ends_;  // the place or transition that a node is or refers to
  std::vector<const XmlNode*> arcs_;
  std::vector<const XmlNode*> pages_;
};

}  // namespace vorel::formats::pnml
