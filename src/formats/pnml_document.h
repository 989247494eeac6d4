// formats/pnml_document.h - a PNML text, parsed, and its elements.
// Here:      loading and parsing, looking for attributes and children, the errors of both.
// Not here:  what the elements mean (formats/pnml_original_net.h, formats/pnml_process.h).
// Included only by the files of the PNML reader, which alone need the parser's header.
#pragma once

#include <rapidxml/rapidxml.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/large_blocks.h"

namespace vorel::formats::pnml {

using XmlNode = rapidxml::xml_node<char>;
using XmlAttribute = rapidxml::xml_attribute<char>;

struct XmlFault {
  std::string_view reason;
  std::size_t offset;  // in the text
  const char* place;   // what is left of the text from there
};

// Owns the text: names and values of the nodes lie in it.
class Document {
 public:
  Document() { xml_.set_allocator(base::allocate_block, base::free_block); }

  // Takes the text over and parses it; null after the error "syntax error in an XML file: ...".
  static std::unique_ptr<Document> parse(std::string text);
  // The same for a caller with an error of its own; null after a call of `report`.
  static std::unique_ptr<Document> parse(std::string text,
                                         const std::function<void(const XmlFault&)>& report);

  // The document node, named "ROOT".
  const XmlNode& root() const { return xml_; }
  // Where in the text the start tag of the element stands.
  std::size_t offset_of(const XmlNode& element) const {
    return static_cast<std::size_t>(element.name() - text_.data()) - 1;
  }
  // Frees all nodes. The text stays, and with it the views of names and values.
  void release_nodes() { xml_.clear(); }

 private:
  std::string text_;
  rapidxml::xml_document<char> xml_;
};

// Reads and parses the file; null after an error.
std::unique_ptr<Document> load_xml(const std::string& file_name);

inline std::string_view name_of(const XmlNode& node) { return {node.name(), node.name_size()}; }
inline std::string_view value_of(const XmlAttribute& attribute) {
  return {attribute.value(), attribute.value_size()};
}

// The first attribute or child element of the name, or null.
const XmlAttribute* attribute(const XmlNode& node, std::string_view name);
const XmlNode* first_child(const XmlNode& node, std::string_view name);
// The same, null after the error that there is none.
const XmlAttribute* require_attribute(const XmlNode& node, std::string_view name);
const XmlNode* require_child(const XmlNode& node, std::string_view name);
// Requires the first child element, whatever its name, to have this one.
const XmlNode* require_first_child(const XmlNode& node, std::string_view name);

// All character data directly inside the element: text and CDATA sections, joined.
std::string text_of(const XmlNode& node);
// The text of the `text` inside the child of the name. nullopt after an error.
std::optional<std::string> require_text(const XmlNode& node, std::string_view child);

struct NumberRange {
  std::int64_t low, high;
};
// The decimal number that the text starts with, 0 if it starts with none. nullopt after an error
// if the number is out of range.
std::optional<std::int64_t> number_of(const std::string& text, NumberRange range);
// The `initialMarking` of a node, 0 if it has none.
std::optional<std::uint32_t> initial_marking_of(const XmlNode& node);

// Report `attribute "..." of XML node "..." has incorrect value "..."`.
void report_incorrect_value(const XmlNode& node, const XmlAttribute& attribute);

}  // namespace vorel::formats::pnml
