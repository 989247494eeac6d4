#include "synthesis/signal_solution.h"

#include <algorithm>
#include <cassert>

namespace vorel {
namespace {

void print_names(std::ostream& stream, const std::vector<std::string>& names) {
  for (const std::string& name : names) stream << ' ' << name;
}

// An element with one `signal` child for each name.
XmlNode* signal_list(XmlDocument& document, std::string_view element,
                     const std::vector<std::string>& names) {
  XmlNode* list = xml_element(document, element);
  for (const std::string& name : names) list->append_node(xml_element(document, "signal", name));
  return list;
}

XmlNode* implementation_element(XmlDocument& document, const SignalImplementation& alternative) {
  XmlNode* node = xml_element(document, "implementation");
  xml_attribute(document, *node, "cost", alternative.cost);
  node->append_node(signal_list(document, "context", alternative.context));
  const std::string text = to_string(alternative.equation);
  node->append_node(xml_element(document, "text", text));
  XmlNode* equation = xml_element(document, "equation");
  equation->append_node(xml_element(document, "text", text));
  node->append_node(equation);
  return node;
}

}  // namespace

std::uint64_t SignalSolution::cost() const { return best().cost; }

void SignalSolution::print(std::ostream& stream) const {
  stream << "Signal " << name_ << " (cost " << cost() << ")\nTriggers (approximation):";
  print_names(stream, triggers_);
  for (const SignalImplementation& alternative : alternatives) {
    stream << "\nContext:";
    print_names(stream, alternative.context);
    stream << "\nEquation (" << alternative.cost << " lits): " << to_string(alternative.equation);
  }
}

XmlNode* SignalSolution::to_xml(XmlDocument& document) const {
  XmlNode* node = xml_element(document, "solution");
  xml_attribute(document, *node, "cost", cost());
  xml_attribute(document, *node, "message", "alternative implementations of " + name_);
  node->append_node(xml_element(document, "signal", name_));
  node->append_node(signal_list(document, "triggers", triggers_));
  for (const SignalImplementation& alternative : alternatives) {
    node->append_node(implementation_element(document, alternative));
  }
  return node;
}

void SignalSolution::trim(std::size_t first, std::size_t last) {
  assert(first <= last);
  if (alternatives.size() <= first) return;
  const std::uint64_t cost = alternatives[first].cost;
  std::size_t end = first + 1;
  while (end < alternatives.size() && end <= last && alternatives[end].cost == cost) ++end;
  alternatives.resize(end);
}

}  // namespace vorel
