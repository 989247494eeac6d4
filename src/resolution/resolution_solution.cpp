#include "resolution/resolution_solution.h"

#include <variant>

#include "resolution/transformation.h"

namespace vorel::resolution {

ResolutionSolution::ResolutionSolution(const ResolutionCost& cost)
    : Solution(false),
      is_insertion_{cost.is_insertion()},
      cost_{cost.total()},
      cost_text_{cost.text()} {
  if (const auto* edges = std::get_if<SignalInsertion>(&cost.transformation)) {
    for (const net::Insertion& edge : *edges) parts_.push_back(to_text(edge));
  } else {
    parts_.push_back(to_text(std::get<Reduction>(cost.transformation)));
  }
}

void ResolutionSolution::print(std::ostream& stream) const {
  std::string text;
  for (const std::string& part : parts_) text += (text.empty() ? "" : ", ") + part;
  stream << text << "\ncost: " << cost_text_ << '\n';
}

results::XmlNode* ResolutionSolution::to_xml(results::XmlDocument& document) const {
  results::XmlNode* const element = Solution::to_xml(document);
  results::xml_attribute(document, *element, "message", "STG transformation");
  results::xml_attribute(document, *element, "type",
                         is_insertion_ ? "signal_insertion" : "concurrency_reduction");
  for (const std::string& part : parts_) {
    results::XmlNode* const item = results::xml_element(document, is_insertion_ ? "ins" : "red");
    item->append_node(results::xml_element(document, "text", part));
    element->append_node(item);
  }
  return element;
}

}  // namespace vorel::resolution
