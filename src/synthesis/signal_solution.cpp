#include "synthesis/signal_solution.h"

#include <algorithm>
#include <cassert>

namespace vorel::synthesis {
namespace {

void print_names(std::ostream& stream, const std::vector<std::string>& names) {
  for (const std::string& name : names) stream << ' ' << name;
}

// An element with one `signal` child for each name.
results::XmlNode* signal_list(results::XmlDocument& document, std::string_view element,
                              const std::vector<std::string>& names) {
  results::XmlNode* list = results::xml_element(document, element);
  for (const std::string& name : names)
    list->append_node(results::xml_element(document, "signal", name));
  return list;
}

results::XmlNode* implementation_element(results::XmlDocument& document,
                                         const SignalImplementation& alternative) {
  results::XmlNode* node = results::xml_element(document, "implementation");
  results::xml_attribute(document, *node, "cost", alternative.cost);
  node->append_node(signal_list(document, "context", alternative.context));
  const std::string text = toolkit::to_string(alternative.equation);
  node->append_node(results::xml_element(document, "text", text));
  results::XmlNode* equation = results::xml_element(document, "equation");
  equation->append_node(results::xml_element(document, "text", text));
  node->append_node(equation);
  return node;
}

}  // namespace

void print_signal_heading(std::ostream& stream, std::string_view name, std::uint64_t cost,
                          const std::vector<std::string>& triggers) {
  stream << "Signal " << name << " (cost " << cost << ")\nTriggers (approximation):";
  print_names(stream, triggers);
}

void print_context(std::ostream& stream, const std::vector<std::string>& context) {
  stream << "\nContext:";
  print_names(stream, context);
}

std::uint64_t SignalSolution::cost() const { return best().cost; }

void SignalSolution::print(std::ostream& stream) const {
  print_signal_heading(stream, name_, cost(), triggers_);
  for (const SignalImplementation& alternative : alternatives) {
    print_context(stream, alternative.context);
    stream << "\nEquation (" << alternative.cost
           << " lits): " << toolkit::to_string(alternative.equation);
  }
}

results::XmlNode* SignalSolution::to_xml(results::XmlDocument& document) const {
  results::XmlNode* node = results::xml_element(document, "solution");
  results::xml_attribute(document, *node, "cost", cost());
  results::xml_attribute(document, *node, "message", "alternative implementations of " + name_);
  node->append_node(results::xml_element(document, "signal", name_));
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

}  // namespace vorel::synthesis
