// results/xml_document.h - the few XML operations that results need, over RapidXML.
#pragma once

#include <cstdint>
#include <rapidxml/rapidxml.hpp>
#include <string_view>

namespace vorel {

using XmlDocument = rapidxml::xml_document<char>;
using XmlNode = rapidxml::xml_node<char>;

// A new element with copies of the texts, owned by the document, not yet attached.
XmlNode* xml_element(XmlDocument& document, std::string_view name, std::string_view value = {});
void xml_attribute(XmlDocument& document, XmlNode& node, std::string_view name,
                   std::string_view value);
void xml_attribute(XmlDocument& document, XmlNode& node, std::string_view name,
                   std::uint64_t value);

}  // namespace vorel
