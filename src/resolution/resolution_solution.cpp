#include "resolution/resolution_solution.h"

#include <variant>

#include "resolution/transformation.h"

namespace vorel::resolution {

TransformationText::TransformationText(const ResolutionCost& of)
    : is_insertion{of.is_insertion()}, cost{of.total()}, cost_text{of.text()} {
  if (const auto* edges = std::get_if<SignalInsertion>(&of.transformation)) {
    for (const net::Insertion& edge : *edges) parts.push_back(to_text(edge));
  } else {
    parts.push_back(to_text(std::get<Reduction>(of.transformation)));
  }
}

void ResolutionSolution::print(std::ostream& stream) const {
  std::string text;
  for (const std::string& part : text_.parts) text += (text.empty() ? "" : ", ") + part;
  stream << text << "\ncost: " << text_.cost_text << '\n';
}

results::XmlNode* ResolutionSolution::to_xml(results::XmlDocument& document) const {
  results::XmlNode* const element = Solution::to_xml(document);
  results::xml_attribute(document, *element, "message", "STG transformation");
  results::xml_attribute(document, *element, "type",
                         text_.is_insertion ? "signal_insertion" : "concurrency_reduction");
  for (const std::string& part : text_.parts) {
    results::XmlNode* const item =
        results::xml_element(document, text_.is_insertion ? "ins" : "red");
    item->append_node(results::xml_element(document, "text", part));
    element->append_node(item);
  }
  return element;
}

}  // namespace vorel::resolution
