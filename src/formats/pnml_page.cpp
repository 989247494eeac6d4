#include "formats/pnml_page.h"

#include <cassert>
#include <string>

#include "base/messages.h"

namespace vorel::formats::pnml {

bool PageNodes::declare(const XmlNode& page) {
  assert(nodes_.empty() && "a page is declared once");
  for (const XmlNode* node = page.first_node(); node != nullptr; node = node->next_sibling()) {
    const std::string_view name = name_of(*node);
    if (name == "arc") ++arc_count_;
    const bool is_place = name == "place";
    if (!is_place && name != "transition") continue;
    const XmlAttribute* const id = require_attribute(*node, "id");
    if (id == nullptr) return false;
    if (!ids_.insert(value_of(*id))) {
      report_duplicate_id(value_of(*id));
      return false;
    }
    const std::uint32_t others = is_place ? place_count_ : transition_count() - 1;
    nodes_.push_back({node, others, is_place});
    if (is_place) ++place_count_;
    assert(nodes_.size() == ids_.size() && place_count_ <= size());
  }
  return true;
}

std::uint32_t PageNodes::resolve(std::string_view id, bool is_place) const {
  const std::uint32_t number = find(id);
  if (number == base::no_index) {
    report_undeclared(id);
    return base::no_index;
  }
  if (nodes_[number].is_place == is_place) return nodes_[number].index;
  base::print_error(std::string("XML identifier \"")
                        .append(id)
                        .append("\" does not name a ")
                        .append(is_place ? "place" : "transition"));
  return base::no_index;
}

std::uint32_t PageNodes::resolve_place(const XmlNode& referrer) const {
  const XmlAttribute* const ref = require_attribute(referrer, "ref");
  return ref == nullptr ? base::no_index : resolve(value_of(*ref), true);
}

std::uint32_t PageNodes::resolve_transition(const XmlNode& referrer) const {
  const XmlAttribute* const ref = require_attribute(referrer, "ref");
  return ref == nullptr ? base::no_index : resolve_transition(*ref);
}

std::uint32_t PageNodes::resolve_transition(const XmlAttribute& ref) const {
  return resolve(value_of(ref), false);
}

}  // namespace vorel::formats::pnml
