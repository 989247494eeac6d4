#include "formats/pnml_net_reader.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include "base/source_text.h"
#include "formats/pnml_document.h"
#include "formats/pnml_net_nodes.h"
#include "formats/repeated_names.h"

namespace vorel::formats {
namespace {

using pnml::Document;
using pnml::XmlNode;

std::string in_lower_case(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower;
}

std::string in_quotes(std::string_view text) { return "\"" + base::excerpt(text) + "\""; }

class PnmlNetReader {
 public:
  PnmlNetReader(const base::SourceText& source, const Document& document)
      : source_{source}, document_{document}, nodes_{source, document} {}

  std::optional<net::Net> run() {
    const XmlNode* const net = the_net();
    if (net == nullptr || !has_right_type(*net) || !nodes_.collect(*net)) return std::nullopt;
    if (!add_nodes() || !read_arcs() || !add_arcs()) return std::nullopt;
    base::RepeatedFault renamed;
    make_names_unique(net_.places, place_ids_, place_elements_, renamed);
    make_names_unique(net_.transitions, transition_ids_, transition_elements_, renamed);
    renamed.warn(source_, "node", "is renamed with its id, as its name occurred before");
    net::sort_net(net_);
    return std::move(net_);
  }

 private:
  struct Arc {
    std::uint32_t place, transition;  // indices
    bool is_output;                   // from the transition to the place
    const XmlNode* element;
  };

  // The only `net`, or the first after a warning.
  const XmlNode* the_net() {
    const XmlNode* const root = child_element(document_.root());
    if (root == nullptr || pnml::local_name(*root) != "pnml") {
      const std::size_t offset = root == nullptr ? source_.size() : document_.offset_of(*root);
      source_.report_expected(offset, "the element pnml",
                              root == nullptr ? "" : pnml::name_of(*root));
      return nullptr;
    }
    const XmlNode* const net = pnml::child_named(*root, "net");
    if (net == nullptr) {
      nodes_.fail(*root, "the element pnml has no net");
      return nullptr;
    }
    warn_of_other_nets(*net);
    return net;
  }

  static const XmlNode* child_element(const XmlNode& node) {
    const XmlNode* child = node.first_node();
    while (child != nullptr && child->type() != rapidxml::node_element) {
      child = child->next_sibling();
    }
    return child;
  }

  void warn_of_other_nets(const XmlNode& first) const {
    for (const XmlNode* node = first.next_sibling(); node != nullptr; node = node->next_sibling()) {
      if (pnml::local_name(*node) != "net") continue;
      source_.warn(document_.offset_of(*node), "only the first net of the document is read");
      return;
    }
  }

  bool has_right_type(const XmlNode& net) const {
    const auto* const type = pnml::attribute(net, "type");
    if (type == nullptr) return nodes_.fail_of(net, "has no type");
    if (in_lower_case(pnml::value_of(*type)).find("ptnet") != std::string::npos) return true;
    return nodes_.fail_of(net, "has the type " + in_quotes(pnml::value_of(*type)) +
                                   ", but only place/transition nets can be read");
  }

  bool add_nodes() {
    for (std::uint32_t number = 0; number < nodes_.nodes().size(); ++number) {
      const auto& node = nodes_.nodes()[number];
      index_of_.push_back(base::no_index);
      if (node.is_reference) continue;
      const std::string_view id = nodes_.id(number);
      index_of_.back() = node.is_place
                             ? add_node(net_.places, *node.element, id, place_ids_, place_elements_)
                             : add_node(net_.transitions, *node.element, id, transition_ids_,
                                        transition_elements_);
      if (index_of_.back() == base::no_index) return false;
      if (node.is_place && !mark(*net_.places.back(), *node.element)) return false;
    }
    return true;
  }

  // The index; no_index after an error.
  template <class T>
  std::uint32_t add_node(base::OwnedList<T>& list, const XmlNode& element, std::string_view id,
                         std::vector<std::string_view>& ids,
                         std::vector<const XmlNode*>& elements) {
    std::string name = pnml::label_text(element, "name");
    if (base::has_control_character(name)) {
      nodes_.fail_of(element, "has an unprintable name");
      return base::no_index;
    }
    T& node = base::append_new(list);
    node.name = name.empty() ? std::string(id) : std::move(name);
    ids.push_back(id);
    elements.push_back(&element);
    return node.index;
  }

  bool mark(net::Place& place, const XmlNode& element) const {
    assert(place.initial_marking == 0);
    const XmlNode* const marking = pnml::child_named(element, "initialMarking");
    if (marking == nullptr) return true;
    const std::string tokens = pnml::label_text(element, "initialMarking");
    if (tokens.empty() || tokens.find_first_not_of("0123456789") != std::string::npos) {
      return nodes_.fail_of(
          element, "has the initial marking " + in_quotes(tokens) + ", which is not a number");
    }
    const std::string digits =
        tokens.substr(std::min(tokens.find_first_not_of('0'), tokens.size() - 1));
    if (digits.size() == 1 && digits[0] <= '1') {
      place.initial_marking = digits[0] == '1' ? 1 : 0;
      return true;
    }
    return source_.report_unsafe(document_.offset_of(element), place.name, digits);
  }

  bool is_ordinary(const XmlNode& element) const {
    const bool has_inscription = pnml::child_named(element, "inscription") != nullptr;
    const std::string inscription = pnml::label_text(element, "inscription");
    if (has_inscription && inscription != "1") {
      return nodes_.fail_of(element, "has the inscription " + in_quotes(inscription) +
                                         ", but the net of a safe system has arcs of weight 1");
    }
    const auto* const type = pnml::attribute(element, "type");
    const XmlNode* const label = type != nullptr ? nullptr : pnml::child_named(element, "type");
    const auto* const value = label == nullptr ? type : pnml::attribute(*label, "value");
    if (value == nullptr || pnml::value_of(*value) == "normal") return true;
    return nodes_.fail_of(element, "has the type " + in_quotes(pnml::value_of(*value)) +
                                       ", but only normal arcs can be read");
  }

  bool read_arcs() {
    arcs_.reserve(nodes_.arcs().size());
    for (const XmlNode* const element : nodes_.arcs()) {
      if (!read_arc(*element)) return false;
    }
    return true;
  }

  bool read_arc(const XmlNode& element) {
    const std::uint32_t source = nodes_.resolve(element, "source");
    if (source == base::no_index) return false;
    const std::uint32_t target = nodes_.resolve(element, "target");
    if (target == base::no_index) return false;
    const bool is_output = nodes_.nodes()[target].is_place;
    if (nodes_.nodes()[source].is_place == is_output) {
      return nodes_.fail_of(
          element, "joins two " + std::string(is_output ? "places " : "transitions ") +
                       in_quotes(nodes_.id(source)) + " and " + in_quotes(nodes_.id(target)));
    }
    assert(index_of_[source] != base::no_index && index_of_[target] != base::no_index);
    const std::uint32_t place = index_of_[is_output ? target : source];
    const std::uint32_t transition = index_of_[is_output ? source : target];
    arcs_.push_back({place, transition, is_output, &element});
    return is_ordinary(element);
  }

  // Several arcs between the same nodes are one with their number as its weight.
  bool add_arcs() {
    const auto place_in_net = [](const Arc& arc) {
      return std::tuple(arc.is_output, arc.place, arc.transition);
    };
    std::ranges::stable_sort(arcs_, {}, place_in_net);
    for (std::size_t i = 0; i < arcs_.size(); ++i) {
      const Arc& arc = arcs_[i];
      if (i > 0 && place_in_net(arcs_[i - 1]) == place_in_net(arc)) {
        return nodes_.fail_of(*arc.element,
                              "runs between the same nodes as another arc, but the "
                              "net of a safe system has arcs of weight 1");
      }
      assert(arc.place < net_.places.size() && arc.transition < net_.transitions.size());
      net::Place& place = *net_.places[arc.place];
      net::Transition& transition = *net_.transitions[arc.transition];
      if (arc.is_output) {
        net::add_arc(transition, place);
      } else {
        net::add_arc(place, transition);
      }
    }
    return true;
  }

  template <class T>
  void make_names_unique(base::OwnedList<T>& list, const std::vector<std::string_view>& ids,
                         const std::vector<const XmlNode*>& elements,
                         base::RepeatedFault& renamed) {
    for (const std::uint32_t index : formats::make_names_unique(list, ids)) {
      renamed.note(document_.offset_of(*elements[index]), list[index]->name);
    }
  }

  const base::SourceText& source_;
  const Document& document_;
  pnml::NetNodes nodes_;
  net::Net net_;
  std::vector<std::uint32_t> index_of_;  // of a node in its list
  std::vector<std::string_view> place_ids_, transition_ids_;
  std::vector<const XmlNode*> place_elements_, transition_elements_;
  std::vector<Arc> arcs_;
};

}  // namespace

std::optional<net::Net> read_pnml_net_text(std::string_view text, const std::string& name) {
  const base::SourceText source(text, name);
  const auto report = [&source](const pnml::XmlFault& fault) {
    source.report_syntax_error(fault.offset, fault.reason, source.rest_of_line(fault.offset));
  };
  const auto document = Document::parse(std::string(text), report);
  return document == nullptr ? std::nullopt : PnmlNetReader(source, *document).run();
}

}  // namespace vorel::formats
