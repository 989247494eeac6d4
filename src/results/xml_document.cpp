#include "results/xml_document.h"

#include <array>
#include <cassert>
#include <iterator>
#include <ostream>
#include <rapidxml/rapidxml_print.hpp>
#include <span>
#include <string>

namespace vorel::results {
namespace {

constexpr std::string_view replacement_character = "\xEF\xBF\xBD";  // U+FFFD

struct SequenceForm {
  std::uint8_t mask, lead;      // the lead byte, masked, equals `lead`
  std::size_t length;           // in bytes
  std::uint32_t smallest_code;  // a smaller code has a shorter form, which is the only legal one
};
constexpr std::array<SequenceForm, 4> sequence_forms = {{
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
}};

constexpr bool is_xml_character(std::uint32_t code) {
  if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
  const bool surrogate = code >= 0xD800 && code < 0xE000;
  return !surrogate && code != 0xFFFE && code != 0xFFFF && code <= 0x10FFFF;
}

// The length of the UTF-8 form of a character that XML can carry at the start of the text, which is
// not empty; 0 if there is none.
std::size_t xml_character_length(std::string_view text) {
  assert(!text.empty());
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  for (const SequenceForm& form : sequence_forms) {
    if ((byte(0) & form.mask) != form.lead) continue;
    if (text.size() < form.length) return 0;
    std::uint32_t code = byte(0) & static_cast<std::uint8_t>(~form.mask);
    for (std::size_t i = 1; i < form.length; ++i) {
      if ((byte(i) & 0xC0) != 0x80) return 0;
      code = code << 6 | (byte(i) & 0x3Fu);
    }
    return code >= form.smallest_code && is_xml_character(code) ? form.length : 0;
  }
  return 0;
}

// Names come from files that need not be XML or UTF-8. What no XML document can hold, escaped or
// not, would make it unreadable as a whole, so each such byte is shown as the replacement
// character.
std::string xml_text(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = xml_character_length(text);
    result += length == 0 ? replacement_character : text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

// A copy that lives as long as the document. The library takes a size of 0 as "up to the NUL".
std::span<char> copy_into(XmlDocument& document, std::string_view text) {
  if (text.empty()) return {};
  return {document.allocate_string(text.data(), text.size()), text.size()};
}

}  // namespace

XmlNode* xml_element(XmlDocument& document, std::string_view name, std::string_view value) {
  assert(!name.empty());
  XmlNode* node = document.allocate_node(rapidxml::node_element);
  const auto name_copy = copy_into(document, name);
  const auto value_copy = copy_into(document, xml_text(value));
  node->name(name_copy.data(), name_copy.size());
  node->value(value_copy.data(), value_copy.size());
  return node;
}

void xml_append_text(XmlDocument& document, XmlNode& node, std::string_view text) {
  const auto copy = copy_into(document, xml_text(text));
  XmlNode* data = document.allocate_node(rapidxml::node_data);
  data->value(copy.data(), copy.size());
  node.append_node(data);
}

void xml_attribute(XmlDocument& document, XmlNode& node, std::string_view name,
                   std::string_view value) {
  assert(!name.empty());
  auto* attribute = document.allocate_attribute();
  const auto name_copy = copy_into(document, name);
  const auto value_copy = copy_into(document, xml_text(value));
  attribute->name(name_copy.data(), name_copy.size());
  attribute->value(value_copy.data(), value_copy.size());
  node.append_attribute(attribute);
}

void xml_attribute(XmlDocument& document, XmlNode& node, std::string_view name,
                   std::uint64_t value) {
  xml_attribute(document, node, name, std::string_view(std::to_string(value)));
}

void print_xml(std::ostream& stream, const XmlDocument& document) {
  rapidxml::print(stream, document);
}

}  // namespace vorel::results
