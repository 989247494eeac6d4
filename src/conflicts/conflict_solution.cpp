#include "conflicts/conflict_solution.h"

namespace vorel::conflicts {

void ConflictSolution::print(std::ostream& stream) const {
  results::Solution::print(stream);
  if (signal_.empty() || !results::is_standard_output(stream)) return;
  stream << "\nConflict for signal " << signal_ << '\n';
}

results::XmlNode* ConflictSolution::to_xml(results::XmlDocument& document) const {
  results::XmlNode* element = results::Solution::to_xml(document);
  if (signal_.empty()) return element;
  results::xml_attribute(document, *element, "signal", signal_);
  results::xml_attribute(document, *element, "message", "CSC conflict for signal " + signal_);
  return element;
}

}  // namespace vorel::conflicts
