#include "formats/pnml_document.h"

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <utility>

#include "base/input_text.h"
#include "base/messages.h"
#include "formats/xml_depth.h"

namespace vorel::formats::pnml {
namespace {

constexpr std::uint32_t largest_depth = 1000;      // the format itself needs 8
constexpr std::size_t largest_excerpt = 1u << 12;  // of the text after a syntax error

std::string quoted(std::string_view text) { return std::string(1, '"').append(text).append("\""); }

void report_syntax_error(const XmlFault& fault) {
  std::string_view excerpt = fault.place;
  const bool is_cut = excerpt.size() > largest_excerpt;
  if (is_cut) excerpt = excerpt.substr(0, largest_excerpt);
  base::print_error(std::string("syntax error in an XML file: ")
                        .append(fault.reason)
                        .append(" (")
                        .append(excerpt)
                        .append(is_cut ? "...)" : ")"));
}

void report_missing_child(const XmlNode& node, std::string_view child) {
  base::print_error("XML node " + quoted(name_of(node)) + " must have a child " + quoted(child));
}

}  // namespace

std::unique_ptr<Document> Document::parse(std::string text) {
  return parse(std::move(text), report_syntax_error);
}

std::unique_ptr<Document> Document::parse(std::string text,
                                          const std::function<void(const XmlFault&)>& report) {
  const auto fail = [&report](const std::string& in, std::string_view reason, const char* place) {
    report({reason, static_cast<std::size_t>(place - in.data()), place});
    return nullptr;
  };
  // The parser takes a zero byte for the end of the text and would overlook what follows it.
  if (const std::size_t zero = text.find('\0'); zero != std::string::npos) {
    return fail(text, "zero byte at offset " + std::to_string(zero), text.data() + zero);
  }
  if (const char* const place = element_below_depth(text, largest_depth)) {
    return fail(text, "elements are nested more than " + std::to_string(largest_depth) + " deep",
                place);
  }
  auto document = std::make_unique<Document>();
  document->text_ = std::move(text);
  try {
    using namespace rapidxml;
    constexpr int flags =
        parse_validate_closing_tags | parse_no_string_terminators | parse_no_element_values;
    document->xml_.parse<flags>(document->text_.data());
  } catch (const rapidxml::parse_error& error) {
    return fail(document->text_, error.what(), error.where<char>());
  }
  document->xml_.name("ROOT", 4);
  return document;
}

std::unique_ptr<Document> load_xml(const std::string& file_name) {
  std::string text;
  if (!base::read_whole_file(file_name, text)) return nullptr;
  return Document::parse(std::move(text));
}

const XmlAttribute* attribute(const XmlNode& node, std::string_view name) {
  const XmlAttribute* found = node.first_attribute();
  while (found != nullptr && std::string_view(found->name(), found->name_size()) != name) {
    found = found->next_attribute();
  }
  return found;
}

const XmlNode* first_child(const XmlNode& node, std::string_view name) {
  assert(!name.empty() && "the name of what is not an element");
  const XmlNode* child = node.first_node();
  while (child != nullptr && name_of(*child) != name) child = child->next_sibling();
  return child;
}

const XmlAttribute* require_attribute(const XmlNode& node, std::string_view name) {
  const XmlAttribute* const found = attribute(node, name);
  if (found == nullptr) {
    base::print_error("XML node " + quoted(name_of(node)) + " must have attribute " + quoted(name));
  }
  return found;
}

const XmlNode* require_child(const XmlNode& node, std::string_view name) {
  const XmlNode* const child = first_child(node, name);
  if (child == nullptr) report_missing_child(node, name);
  return child;
}

const XmlNode* require_first_child(const XmlNode& node, std::string_view name) {
  const XmlNode* child = node.first_node();
  while (child != nullptr && child->type() != rapidxml::node_element) child = child->next_sibling();
  if (child == nullptr) {
    base::print_error("XML node " + quoted(name_of(node)) + " has no children");
    return nullptr;
  }
  if (name_of(*child) == name) return child;
  report_missing_child(node, name);
  return nullptr;
}

std::string text_of(const XmlNode& node) {
  std::string text;
  for (const XmlNode* piece = node.first_node(); piece != nullptr; piece = piece->next_sibling()) {
    if (piece->type() == rapidxml::node_element) continue;
    text.append(piece->value(), piece->value_size());
  }
  return text;
}

std::optional<std::string> require_text(const XmlNode& node, std::string_view child) {
  const XmlNode* const holder = require_child(node, child);
  const XmlNode* const text = holder == nullptr ? nullptr : require_child(*holder, "text");
  if (text == nullptr) return std::nullopt;
  return text_of(*text);
}

std::optional<std::int64_t> number_of(const std::string& text, NumberRange range) {
  errno = 0;
  const long long number = std::strtoll(text.c_str(), nullptr, 10);
  assert(range.low <= range.high);
  if (errno != ERANGE && range.low <= number && number <= range.high) return number;
  base::print_error("positive integer expected: " + text);
  return std::nullopt;
}

std::optional<std::uint32_t> initial_marking_of(const XmlNode& node) {
  if (first_child(node, "initialMarking") == nullptr) return 0;
  const auto text = require_text(node, "initialMarking");
  if (!text) return std::nullopt;
  const auto tokens = number_of(*text, {0, std::numeric_limits<std::uint32_t>::max()});
  if (!tokens) return std::nullopt;
  return static_cast<std::uint32_t>(*tokens);
}

void report_incorrect_value(const XmlNode& node, const XmlAttribute& attribute) {
  base::print_error("attribute " + quoted({attribute.name(), attribute.name_size()}) +
                    " of XML node " + quoted(name_of(node)) + " has incorrect value " +
                    quoted(value_of(attribute)));
}

}  // namespace vorel::formats::pnml
