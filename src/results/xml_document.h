// results/xml_document.h - the few XML operations that results need, over RapidXML.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <rapidxml/rapidxml.hpp>
#include <string_view>

namespace vorel::results {

using XmlDocument = rapidxml::xml_document<char>;
using XmlNode = rapidxml::xml_node<char>;

// A new element with copies of the texts, owned by the document, not yet attached. In values any
// bytes may stand: those that XML cannot carry become U+FFFD, so that the document stays readable.
XmlNode* xml_element(XmlDocument& document, std::string_view name, std::string_view value = {});
// Appended as text after the children that the element has.
void xml_append_text(XmlDocument& document, XmlNode& node, std::string_view text);
// Appended after the attributes that the element has.
void xml_attribute(XmlDocument& document, XmlNode& node, std::string_view name,
                   std::string_view value);
void xml_attribute(XmlDocument& document, XmlNode& node, std::string_view name,
                   std::uint64_t value);

// Indented by tabs. Failures show in the state of the stream.
void print_xml(std::ostream& stream, const XmlDocument& document);

}  // namespace vorel::results
