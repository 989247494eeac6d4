#include "formats/pnml_net_nodes.h"

#include <algorithm>
#include <cassert>

namespace vorel::formats::pnml {
namespace {

constexpr std::string_view white_space = " \t\r\n";

struct NodeRow {
  std::string_view element;
  bool is_place, is_reference;
};
constexpr NodeRow node_table[] = {
    {"place", true, false},
    {"transition", false, false},
    {"referencePlace", true, true},
    {"referenceTransition", false, true},
};

std::string with_single_blanks(std::string_view text) {
  std::string words;
  for (;;) {
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(white_space)));
    if (text.empty()) return words;
    const std::string_view word = text.substr(0, text.find_first_of(white_space));
    if (!words.empty()) words += ' ';
    words += word;
    text.remove_prefix(word.size());
  }
}

}  // namespace

std::string_view local_name(const XmlNode& element) {
  std::string_view name = name_of(element);
  name.remove_prefix(name.rfind(':') + 1);  // nothing if there is no prefix
  return name;
}

const XmlNode* child_named(const XmlNode& element, std::string_view name) {
  const XmlNode* child = element.first_node();
  while (child != nullptr && local_name(*child) != name) child = child->next_sibling();
  return child;
}

std::string label_text(const XmlNode& element, std::string_view name) {
  const XmlNode* const label = child_named(element, name);
  const XmlNode* const text = label == nullptr ? nullptr : child_named(*label, "text");
  return text == nullptr ? std::string() : with_single_blanks(text_of(*text));
}

bool NetNodes::fail(const XmlNode& element, const std::string& text) const {
  return source_.report(document_.offset_of(element), text);
}

bool NetNodes::fail_of(const XmlNode& element, const std::string& text) const {
  const XmlAttribute* const id = attribute(element, "id");
  const std::string shown = id == nullptr ? "" : " \"" + base::excerpt(value_of(*id)) + "\"";
  return fail(element, std::string(local_name(element)) + shown + " " + text);
}

bool NetNodes::add_node(const XmlNode& element, bool is_place, bool is_reference) {
  const XmlAttribute* const id = attribute(element, "id");
  if (id == nullptr || value_of(*id).empty()) return fail_of(element, "has no id");
  if (base::has_control_character(value_of(*id))) return fail_of(element, "has an unprintable id");
  if (!ids_.insert(value_of(*id))) return fail_of(element, "has an id that occurred before");
  assert(ids_.size() == nodes_.size() + 1);
  ends_.push_back(is_reference ? base::no_index : static_cast<std::uint32_t>(nodes_.size()));
  nodes_.push_back({&element, is_place, is_reference});
  return true;
}

bool NetNodes::add_children(const XmlNode& page) {
  for (const XmlNode* child = page.first_node(); child != nullptr; child = child->next_sibling()) {
    const std::string_view name = local_name(*child);
    const auto row = std::ranges::find(node_table, name, &NodeRow::element);
    if (row != std::end(node_table)) {
      if (!add_node(*child, row->is_place, row->is_reference)) return false;
    } else if (name == "arc") {
      arcs_.push_back(child);
    } else if (name == "page") {
      pages_.push_back(child);
    }
  }
  return true;
}

std::uint32_t NetNodes::find(const XmlNode& element, std::string_view attribute_name) const {
  const XmlAttribute* const id = attribute(element, attribute_name);
  if (id == nullptr) {
    fail_of(element, "has no attribute \"" + std::string(attribute_name) + "\"");
    return base::no_index;
  }
  const std::uint32_t node = ids_.find(value_of(*id));
  if (node == base::no_index) {
    fail_of(element, "names \"" + base::excerpt(value_of(*id)) + "\", which is no node of the net");
  }
  return node;
}

// Finds the end of a chain of references, for all nodes of the chain.
bool NetNodes::follow(std::uint32_t start) {
  std::vector<std::uint32_t> chain;
  std::uint32_t at = start;
  while (ends_[at] == base::no_index) {
    ends_[at] = at;  // as long as a reference is its own end, it is on the chain
    chain.push_back(at);
    const std::uint32_t next = find(*nodes_[at].element, "ref");
    if (next == base::no_index) return false;
    if (nodes_[next].is_place != nodes_[at].is_place) {
      return fail_of(*nodes_[at].element, "names \"" + base::excerpt(id(next)) +
                                              "\", which is a node of the other sort");
    }
    if (nodes_[next].is_reference && ends_[next] == next) {
      return fail_of(*nodes_[next].element, "refers to itself");
    }
    at = next;
  }
  assert(ends_[at] != base::no_index && !nodes_[ends_[at]].is_reference);
  for (const std::uint32_t reference : chain) ends_[reference] = ends_[at];
  return true;
}

bool NetNodes::collect(const XmlNode& net) {
  assert(nodes_.empty() && pages_.empty());
  pages_.push_back(&net);
  for (std::size_t i = 0; i < pages_.size(); ++i) {
    if (!add_children(*pages_[i])) return false;
  }
  for (std::uint32_t node = 0; node < nodes_.size(); ++node) {
    if (!follow(node)) return false;
  }
  return true;
}

std::uint32_t NetNodes::resolve(const XmlNode& element, std::string_view attribute_name) const {
  const std::uint32_t node = find(element, attribute_name);
  if (node == base::no_index) return base::no_index;
  assert(ends_[node] < nodes_.size() && nodes_[ends_[node]].is_place == nodes_[node].is_place);
  assert(!nodes_[ends_[node]].is_reference);
  return ends_[node];
}

}  // namespace vorel::formats::pnml
